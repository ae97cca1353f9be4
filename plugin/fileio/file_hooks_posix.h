// Fault injection and counters for every WinFile of the native twin (win_file_posix.cpp), also inside a
// plug-in that is loaded into a test's process: a test keeps a FileHooks alive and puts its address into the
// environment variable, and the twin looks there whenever a WinFile is made. Windows builds know nothing of
// it.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>

namespace orvantis::test {

/// One kind of file operation. Operations are numbered from 1 in the order in which they arrive, over all
/// files.
struct FileOperationHook {
    std::atomic<std::uint64_t> count = 0;     ///< operations so far, the failed ones included
    std::atomic<std::uint64_t> failAt = 0;    ///< number of the operation that fails; 0: none
    std::atomic<bool> failFromThere = false;  ///< all later ones fail too

    /// Counts one operation; true when it has to fail.
    bool arrives() noexcept {
        const std::uint64_t number = ++count;
        const std::uint64_t at = failAt.load();
        return at != 0 && (number == at || (failFromThere.load() && number > at));
    }
};

struct FileHooks {
    FileOperationHook opens;                      ///< a failed open answers false and opens nothing
    FileOperationHook reads;                      ///< a failed read gives 0 bytes and does not move
    FileOperationHook writes;                     ///< a failed write gives 0 bytes and writes nothing
    FileOperationHook seeks;                      ///< a failed seek answers false and does not move
    FileOperationHook tells;                      ///< a failed tell gives 0
    FileOperationHook sizes;                      ///< a failed size gives 0
    std::atomic<std::uint64_t> opened = 0;        ///< opens that succeeded
    std::atomic<std::uint64_t> closes = 0;        ///< handles closed; equal to `opened` when nothing leaks
    std::atomic<std::uint64_t> bytesRead = 0;     ///< really read
    std::atomic<std::uint64_t> bytesWritten = 0;  ///< really written
    /// Called before each read with the bytes that are wanted; may wait. Set while no file is in use.
    std::function<void(std::uint64_t)> beforeRead;
};

/// The environment variable with the address of the FileHooks of this process, decimal or "0x...".
inline constexpr const char* kFileHooksVariable = "ORVANTIS_TEST_FILE_HOOKS";

}  // namespace orvantis::test
