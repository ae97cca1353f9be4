// The tool at work, with its error stream at hand, and Ctrl-C. Implemented by running_tool_win32.cpp and
// running_tool_posix.cpp. One thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

class RunningTool {
 public:
    /// UTF-8 arguments. Throws std::runtime_error when it cannot be started.
    explicit RunningTool(const std::vector<std::string>& arguments);
    RunningTool(const RunningTool&) = delete;
    RunningTool& operator=(const RunningTool&) = delete;
    /// Ends it if the test has failed before its end.
    ~RunningTool();

    /// Reads the error stream until the text has come. False when the stream ends first.
    bool waitFor(const std::string& text);
    /// As by the user's Ctrl-C.
    void interrupt() const;
    /// Gives the exit code; on POSIX 1000 and more after a signal.
    int wait();

 private:
    std::intptr_t m_process = 0;                  // handle or id
    [[maybe_unused]] std::uint32_t m_number = 0;  // of the process, on Windows
    std::intptr_t m_errors = -1;
};
