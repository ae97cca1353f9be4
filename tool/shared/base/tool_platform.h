// What the tool needs of the operating system. Implemented by tool_platform_win32.cpp and, for native builds,
// by a twin among the tests. Main thread only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace simhost::tool {

/// The program's arguments in UTF-8, without its name.
std::vector<std::string> programArguments(int argc, const char* const* argv);

/// Folder of the program, without a separator at its end; UTF-8.
std::string executableFolder();

/// The calling thread's number, as the plug-in writes it into its log.
std::uint32_t threadNumber();

/// Lets UTF-8 through to the terminal.
void prepareTerminal();
bool stderrIsTerminal();

/// Turns the plug-in's diagnostic log on while it exists, for this process alone; the user's own setting is
/// not touched. The plug-in reads the switch in its first call.
class LogSwitch {
 public:
    /// Throws std::runtime_error with the system's reason.
    LogSwitch();
    LogSwitch(const LogSwitch&) = delete;
    LogSwitch& operator=(const LogSwitch&) = delete;
    ~LogSwitch();

 private:
    [[maybe_unused]] void* m_state = nullptr;
};

/// Where the plug-in writes its logs; UTF-8. Empty when the system does not tell.
std::string logFolder();

}  // namespace simhost::tool
