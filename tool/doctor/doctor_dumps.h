// The doctor's look at crash dumps: whether the system writes them for the hosts, where they are, and the
// switch. A dump and the release's symbols tell the line of a crash. Main thread only.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "tool/doctor/doctor_checks.h"
#include "tool/shared/run/crash_dumps.h"

namespace simhost::tool {

struct HostDumps {
    std::string program;             ///< file name of the host
    DumpSetting setting;             ///< as the system has it
    std::vector<std::string> dumps;  ///< the newest first
};

/// The file names of the programs that load the plug-in.
std::span<const char* const> hostPrograms() noexcept;

/// What the system does for each of them.
std::vector<HostDumps> findDumps();

/// One line for all hosts.
Check checkDumps(std::span<const HostDumps> hosts);

/// Switches dumps of all hosts on or off. Throws ToolError when the system does not let this account do it.
void switchDumps(bool on);

}  // namespace simhost::tool
