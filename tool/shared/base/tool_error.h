// How the tool ends. Exit codes are part of its interface: scripts test them.
#pragma once

#include <stdexcept>
#include <string>

namespace simhost::tool {

enum ExitCode : int {
    kSuccess = 0,
    kFailed = 1,    ///< the plug-in refused the file or a request
    kUsage = 2,     ///< wrong arguments
    kNoPlugin = 3,  ///< the plug-in could not be loaded or started
    kNoOutput = 4,  ///< a file could not be written
    kBrokenRule =
        5,  ///< the plug-in leaked, or broke a rule of the host, or its two paths gave different frames
};

/// A failure with the text for the user and the exit code of the tool.
class ToolError : public std::runtime_error {
 public:
    ToolError(ExitCode exitCode, const std::string& text) : std::runtime_error(text), m_code(exitCode) {}
    ExitCode code() const noexcept { return m_code; }

 private:
    ExitCode m_code;
};

}  // namespace simhost::tool
