// The native twin of tool/shared/base/process_usage_win32.cpp: descriptors instead of handles.
#include "tool/shared/base/process_usage.h"

#include <fcntl.h>
#include <malloc.h>
#include <pthread.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>
#include <vector>

// The sanitizers bring an allocator of their own.
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#include <sanitizer/allocator_interface.h>
#define ORVANTIS_SANITIZER_HEAP 1
#endif
#endif

namespace simhost::tool {
namespace {

std::uint64_t countHeapBytes() {
#ifdef ORVANTIS_SANITIZER_HEAP
    return __sanitizer_get_current_allocated_bytes();
#else
    const struct mallinfo2 heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
#endif
}

std::uint64_t countDescriptors() {
    std::error_code error;
    std::uint64_t count = 0;
    for (std::filesystem::directory_iterator it("/proc/self/fd", error), end; !error && it != end;
         it.increment(error)) {
        ++count;
    }
    return count;
}

}  // namespace

ProcessUsage processUsage() {
    ProcessUsage out;
    out.handles = countDescriptors();
    out.heapBytes = countHeapBytes();
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        const auto kibibytesOf = [&line](std::string_view name) {
            return std::strtoull(line.c_str() + name.size(), nullptr, 10) * 1024;
        };
        if (line.starts_with("RssAnon:")) {
            out.privateBytes = kibibytesOf("RssAnon:");
        } else if (line.starts_with("VmRSS:")) {
            out.workingSet = kibibytesOf("VmRSS:");
        }
    }
    return out;
}

std::uint32_t freeThreadSlots() {
    std::vector<pthread_key_t> taken;
    for (pthread_key_t key = 0; pthread_key_create(&key, nullptr) == 0;) {
        taken.push_back(key);
    }
    for (const pthread_key_t key : taken) {
        (void)pthread_key_delete(key);
    }
    return static_cast<std::uint32_t>(taken.size());
}

void setProcessEnvironment(const std::string& name, const std::string& valueUtf8) {
    (void)setenv(name.c_str(), valueUtf8.c_str(), 1);
}

std::uint32_t processNumber() noexcept {
    return static_cast<std::uint32_t>(getpid());
}

void loseHandle() {
    (void)open("/dev/null", O_RDONLY | O_CLOEXEC);
}

}  // namespace simhost::tool
