// The twin for native builds, where no host runs: nothing writes dumps, and nothing can be switched.
#include "tool/shared/run/crash_dumps.h"

namespace simhost::tool {

DumpSetting dumpSetting(const std::string&) {
    return {};
}

DumpSwitch setDumps(const std::string&, bool) {
    return DumpSwitch::kFailed;
}

std::vector<std::string> dumpsOf(const std::string&, const std::string&) {
    return {};
}

}  // namespace simhost::tool
