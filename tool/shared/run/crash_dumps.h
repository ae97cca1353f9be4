// Windows' own minidumps of crashed programs ("LocalDumps" of Windows Error Reporting): whether a program
// gets them, where they lie, and the switch. Documented under "Collecting User-Mode Dumps" in the Windows
// documentation. Implemented by crash_dumps_win32.cpp and, for native builds, by a twin beside it. Main
// thread only. All paths are UTF-8.
#pragma once

#include <string>
#include <vector>

namespace simhost::tool {

struct DumpSetting {
    bool on = false;
    bool ours = false;   ///< switched on by setDumps, which alone switches off again what it has switched on
    std::string folder;  ///< where dumps of this account's programs lie
};

/// `program` is a file name, "a.exe".
DumpSetting dumpSetting(const std::string& program);

enum class DumpSwitch { kDone, kNotOurs, kNotAllowed, kFailed };

/// On: small dumps, the newest five, in the system's usual folder. It is a setting of the machine and needs
/// administrator rights (kNotAllowed). Leaves alone what somebody else has set (kNotOurs).
DumpSwitch setDumps(const std::string& program, bool on);

/// The dumps of a program in a folder, the newest first.
std::vector<std::string> dumpsOf(const std::string& program, const std::string& folder);

}  // namespace simhost::tool
