// A crash of this process, told by what dies to those who started it: a short file that says where, and a
// dump of the process where the system writes one. Implemented by crash_watch_win32.cpp and
// crash_watch_posix.cpp.
#pragma once

#include <string>

namespace simhost::tool {

/// From now on a crash writes the file `recordUtf8` and, on Windows, a minidump to `dumpUtf8` unless that is
/// empty; then the process ends. The lines of the record: what happened, the module, the offset in it, and
/// from the fourth on the calls that led there, nearest first, as "module+0x1234". Call once, before other
/// threads are started.
void watchForCrashes(const std::string& recordUtf8, const std::string& dumpUtf8);

/// Where in which loaded module an address lies, "ImporterX.prm" and 0x1234; the module is empty for none.
struct CodePlace {
    std::string module;
    unsigned long long offset = 0;
};
CodePlace codePlace(const void* address);

}  // namespace simhost::tool
