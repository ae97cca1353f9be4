// What this process holds of the operating system. Implemented by process_usage_win32.cpp and, for native
// builds, by a twin beside it.
#pragma once

#include <cstdint>
#include <string>

namespace simhost::tool {

struct ProcessUsage {
    std::uint64_t handles = 0;       ///< native builds: file descriptors
    std::uint64_t privateBytes = 0;  ///< memory that belongs to this process alone
    std::uint64_t workingSet = 0;    ///< memory that is present, shared pages among it
    /// What is allocated on the heaps, to the byte: the two above go in steps of mebibytes.
    std::uint64_t heapBytes = 0;
};

/// Any thread; others wait with allocating meanwhile. A number that the system does not tell is 0.
ProcessUsage processUsage();

/// How many more indexes of thread-local storage the process can take; those of the C library natively. Any
/// thread; others that take one meanwhile may be refused.
std::uint32_t freeThreadSlots();

/// For libraries that are loaded later. Call while no other thread reads the environment.
void setProcessEnvironment(const std::string& name, const std::string& valueUtf8);

std::uint32_t processNumber() noexcept;

/// Loses one handle for good: how a run is shown to notice it.
void loseHandle();

}  // namespace simhost::tool
