// How the tool ends. Exit codes are part of its interface: scripts test them.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace simhost::tool {

enum ExitCode : int {
    kSuccess = 0,
    kFailed = 1,    ///< the plug-in refused the file or a request
    kUsage = 2,     ///< wrong arguments
    kNoPlugin = 3,  ///< the plug-in could not be loaded or started
    kNoOutput = 4,  ///< a file could not be written
    kBrokenRule =
        5,  ///< the plug-in leaked, or broke a rule of the host, or its two paths gave different frames
    kInterrupted = 130,  ///< ended by Ctrl-C or by the system, as shells have it
};

/// A failure with the text for the user, what to do about it, and the exit code of the tool.
class ToolError : public std::runtime_error {
 public:
    /// `kind` names the failure for programs: "missing-file". `advice` may be empty.
    ToolError(ExitCode exitCode, const std::string& text, std::string advice = {}, std::string kind = {})
        : std::runtime_error(text), m_code(exitCode), m_advice(std::move(advice)), m_kind(std::move(kind)) {}

    ExitCode code() const noexcept { return m_code; }
    const std::string& advice() const noexcept { return m_advice; }
    /// Never empty: failures without a name of their own are named by the exit code.
    std::string kind() const;

 private:
    ExitCode m_code;
    std::string m_advice;
    std::string m_kind;
};

}  // namespace simhost::tool
