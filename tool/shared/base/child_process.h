// This program once more as a process of its own, for work that may crash or hang. Implemented by
// child_process_win32.cpp and child_process_posix.cpp. One owner; main thread only.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace simhost::tool {

/// This program's own file; UTF-8.
std::string thisProgramFile();

/// For the child: it ends when the process that started it does. Call first thing in its main thread.
void endWithParent();

class ChildProcess {
 public:
    /// Starts this program with UTF-8 `arguments`. What it prints goes to the file `outputUtf8`, which is
    /// made anew. It ends when this process does, as far as the system offers that. Throws std::runtime_error
    /// with the system's reason.
    ChildProcess(const std::vector<std::string>& arguments, const std::string& outputUtf8);
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    /// Ends it if it still runs.
    ~ChildProcess();

    /// The exit code once it has ended, on POSIX 128 + signal after a signal; nothing while it still runs
    /// after `patience`.
    std::optional<std::uint32_t> waitFor(std::chrono::milliseconds patience);
    /// Processor time that it has had so far, in seconds; 0 once it has ended. Under Windows in steps of 10
    /// to 16 ms.
    double worked() const;
    /// Ends it at once, and waits until it has.
    void kill();

 private:
    std::intptr_t m_process = 0;               // handle or id; 0 once it has ended
    [[maybe_unused]] std::intptr_t m_job = 0;  // Windows: what ends it together with this process
    std::uint32_t m_exitCode = 0;
};

}  // namespace simhost::tool
