// What the compiler calls before each access of the plug-in's code.
#include <cstdint>
#include <cstring>

#include "tests/schedules/scheduler/races.h"

#ifdef ORVANTIS_SCHEDULES_WATCH

// The names are the compiler's.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" {

#define ORVANTIS_ACCESS(name, bytes, write)                                      \
    void name(void* at) {                                                        \
        schedules::races::access(at, bytes, write, __builtin_return_address(0)); \
    }
ORVANTIS_ACCESS(__tsan_read1, 1, false)
ORVANTIS_ACCESS(__tsan_read2, 2, false)
ORVANTIS_ACCESS(__tsan_read4, 4, false)
ORVANTIS_ACCESS(__tsan_read8, 8, false)
ORVANTIS_ACCESS(__tsan_read16, 16, false)
ORVANTIS_ACCESS(__tsan_write1, 1, true)
ORVANTIS_ACCESS(__tsan_write2, 2, true)
ORVANTIS_ACCESS(__tsan_write4, 4, true)
ORVANTIS_ACCESS(__tsan_write8, 8, true)
ORVANTIS_ACCESS(__tsan_write16, 16, true)
ORVANTIS_ACCESS(__tsan_unaligned_read2, 2, false)
ORVANTIS_ACCESS(__tsan_unaligned_read4, 4, false)
ORVANTIS_ACCESS(__tsan_unaligned_read8, 8, false)
ORVANTIS_ACCESS(__tsan_unaligned_read16, 16, false)
ORVANTIS_ACCESS(__tsan_unaligned_write2, 2, true)
ORVANTIS_ACCESS(__tsan_unaligned_write4, 4, true)
ORVANTIS_ACCESS(__tsan_unaligned_write8, 8, true)
ORVANTIS_ACCESS(__tsan_unaligned_write16, 16, true)
ORVANTIS_ACCESS(__tsan_vptr_read, 8, false)
#undef ORVANTIS_ACCESS

void __tsan_init() {}

// A destructor sets the pointer to the functions of its own class, which is mostly there already.
void __tsan_vptr_update(void** at, void* value) {
    if (*at != value) schedules::races::access(at, 8, true, __builtin_return_address(0));
}

void __tsan_read_range(void* at, unsigned long bytes) {
    schedules::races::access(at, bytes, false, __builtin_return_address(0));
}
void __tsan_write_range(void* at, unsigned long bytes) {
    schedules::races::access(at, bytes, true, __builtin_return_address(0));
}

void* __tsan_memcpy(void* to, const void* from, unsigned long bytes) {
    schedules::races::access(from, bytes, false, __builtin_return_address(0));
    schedules::races::access(to, bytes, true, __builtin_return_address(0));
    return std::memcpy(to, from, bytes);
}
void* __tsan_memmove(void* to, const void* from, unsigned long bytes) {
    schedules::races::access(from, bytes, false, __builtin_return_address(0));
    schedules::races::access(to, bytes, true, __builtin_return_address(0));
    return std::memmove(to, from, bytes);
}
void* __tsan_memset(void* at, int value, unsigned long bytes) {
    schedules::races::access(at, bytes, true, __builtin_return_address(0));
    return std::memset(at, value, bytes);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

#endif
