// Counts every allocation of the process, by any thread and from any library.
#pragma once

#include <cstdint>

namespace orvantis::bench {

/// Calls of malloc, calloc, realloc and everything built on them since the process began.
std::uint64_t allocationCount() noexcept;

/// Bytes on the heap and in mappings of the allocator.
std::uint64_t heapBytes() noexcept;

/// From now on every block of 64 KiB and more is fresh memory and goes back to the system when it is freed.
/// The allocator of glibc begins that way, but keeps memory once a large block was freed.
void useFreshMemory() noexcept;

}  // namespace orvantis::bench
