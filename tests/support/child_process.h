// Starts another program of the build (or this one again) and waits for it. Standard streams are inherited.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace orvantis::test {

class ChildProcess {
 public:
    /// Starts `program` with `arguments` (UTF-8). Throws std::runtime_error when it cannot be started.
    ChildProcess(const std::filesystem::path& program, const std::vector<std::string>& arguments);
    /// Waits if wait() was not called.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// The exit code; on POSIX 128 + signal after a signal.
    int wait();

 private:
    std::intptr_t m_process;  ///< process handle or id; 0 once waited for
    int m_exitCode = -1;
};

/// The running program's own file.
std::filesystem::path thisProgram();

/// The system's number of this process, and of the calling thread.
std::uint32_t thisProcessId();
std::uint32_t thisThreadId();

}  // namespace orvantis::test
