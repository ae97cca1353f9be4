// What the compiler calls before each access of the plug-in's code.
#include <dlfcn.h>

#include <cstdint>
#include <cstring>
#include <list>
#include <map>

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
    if (*at != value) {
        schedules::races::access(at, 8, true, __builtin_return_address(0));
    }
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

// The library links the nodes of maps and lists in functions of its own, which are not instrumented: what
// they write is told here, where they are called.

namespace std {

using schedules::races::access;

void _Rb_tree_insert_and_rebalance(const bool left, _Rb_tree_node_base* node, _Rb_tree_node_base* parent,
                                   _Rb_tree_node_base& header) noexcept {
    const void* const site = __builtin_return_address(0);
    access(node, sizeof *node, true, site);
    access(parent, sizeof *parent, true, site);
    access(&header, sizeof header, true, site);
    static const auto inLibrary =
        reinterpret_cast<void (*)(bool, _Rb_tree_node_base*, _Rb_tree_node_base*, _Rb_tree_node_base&)>(
            dlsym(RTLD_NEXT, "_ZSt29_Rb_tree_insert_and_rebalancebPSt18_Rb_tree_node_baseS0_RS_"));
    inLibrary(left, node, parent, header);
}

_Rb_tree_node_base* _Rb_tree_rebalance_for_erase(_Rb_tree_node_base* const node,
                                                 _Rb_tree_node_base& header) noexcept {
    const void* const site = __builtin_return_address(0);
    access(node, sizeof *node, true, site);
    access(&header, sizeof header, true, site);
    static const auto inLibrary =
        reinterpret_cast<_Rb_tree_node_base* (*)(_Rb_tree_node_base*, _Rb_tree_node_base&)>(
            dlsym(RTLD_NEXT, "_ZSt28_Rb_tree_rebalance_for_erasePSt18_Rb_tree_node_baseRS_"));
    return inLibrary(node, header);
}

namespace __detail {

void _List_node_base::_M_hook(_List_node_base* const position) noexcept {
    const void* const site = __builtin_return_address(0);
    access(this, sizeof *this, true, site);
    access(&position->_M_prev, sizeof position->_M_prev, true, site);
    access(&position->_M_prev->_M_next, sizeof position->_M_next, true, site);
    _M_next = position;
    _M_prev = position->_M_prev;
    position->_M_prev->_M_next = this;
    position->_M_prev = this;
}

void _List_node_base::_M_unhook() noexcept {
    const void* const site = __builtin_return_address(0);
    access(&_M_next->_M_prev, sizeof _M_prev, true, site);
    access(&_M_prev->_M_next, sizeof _M_next, true, site);
    _M_prev->_M_next = _M_next;
    _M_next->_M_prev = _M_prev;
}

}  // namespace __detail

}  // namespace std
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

#endif
