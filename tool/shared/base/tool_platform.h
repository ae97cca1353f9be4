// What the tool needs of the operating system. Implemented by tool_platform_win32.cpp and, for native builds,
// by a twin beside it. Main thread only.
#pragma once

#include <cstdint>
#include <memory>
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

/// Decides about the plug-in's diagnostic log while it exists, for this process alone; the user's own setting
/// is not touched. The plug-in reads the switch, and asks for the folder, in its first call.
class LogSwitch {
 public:
    /// `profileUtf8`, unless empty, is what the plug-in takes for the user's profile, in which it makes its
    /// log folder. `plugin` is any address inside the plug-in; null when there is no folder to set. Throws
    /// std::runtime_error with the system's reason.
    explicit LogSwitch(bool on, const std::string& profileUtf8 = {}, const void* plugin = nullptr);
    LogSwitch(const LogSwitch&) = delete;
    LogSwitch& operator=(const LogSwitch&) = delete;
    ~LogSwitch();

 private:
    struct State;
    std::unique_ptr<State> m_state;
};

/// Where the plug-in writes its logs below a user's profile.
std::string logFolderBelow(const std::string& profileUtf8);
/// The same for this user; UTF-8. Empty when the system does not tell the profile.
std::string logFolder();

/// "Windows 10.0.19045", "Linux 6.1.0 x86_64".
std::string systemName();

/// The file of a library that this process has loaded, by its name without folder; UTF-8. Empty when it has
/// not.
std::string loadedLibrary(const std::string& name);
/// What the codec library's file is called on this system.
std::string codecLibraryName();

/// Shows a file with the program that the user has for such files. False when the system refuses.
bool openWithSystem(const std::string& pathUtf8);

}  // namespace simhost::tool
