#include "tool/doctor/doctor_dumps.h"

#include <algorithm>
#include <array>

#include "tool/shared/base/tool_error.h"

namespace simhost::tool {
namespace {

constexpr std::array kHosts = {"Adobe Premiere Pro.exe", "AfterFX.exe", "Adobe Media Encoder.exe"};

}  // namespace

std::span<const char* const> hostPrograms() noexcept {
    return kHosts;
}

std::vector<HostDumps> findDumps() {
    std::vector<HostDumps> out;
    for (const char* program : kHosts) {
        DumpSetting setting = dumpSetting(program);
        std::vector<std::string> dumps = dumpsOf(program, setting.folder);
        out.push_back({program, std::move(setting), std::move(dumps)});
    }
    return out;
}

Check checkDumps(std::span<const HostDumps> hosts) {
    const std::string name = "crash dumps";
    std::string on;
    std::string newest;
    std::string folder;
    for (const HostDumps& host : hosts) {
        if (host.setting.on) {
            on += (on.empty() ? "" : ", ") + host.program;
            folder = folder.empty() ? host.setting.folder : folder;
        }
        if (newest.empty() && !host.dumps.empty()) {
            newest = host.dumps.front();
        }
    }
    const std::string found = newest.empty() ? "none so far" : "the newest is " + newest;
    if (on.empty()) {
        return {CheckState::kGood, name,
                "the system writes none when a host crashes; to switch them on, as an administrator: "
                "importer_host doctor --dumps on" +
                    (newest.empty() ? "" : " (" + found + ")"),
                ""};
    }
    Check check{CheckState::kGood, name, "the system writes them for " + on + " to " + folder + "; " + found,
                ""};
    if (!newest.empty()) {
        check.state = CheckState::kWarning;
        check.advice = "send it with a report of the crash; it holds parts of the host's memory";
    }
    return check;
}

void switchDumps(bool on) {
    for (const char* program : kHosts) {
        switch (setDumps(program, on)) {
            case DumpSwitch::kDone:
                break;
            case DumpSwitch::kNotOurs:
                throw ToolError(kFailed,
                                std::string("crash dumps of ") + program +
                                    " were set by somebody else, and stay as they are",
                                R"(the setting is HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Windows\)"
                                R"(Windows Error Reporting\LocalDumps)",
                                "dumps-not-ours");
            case DumpSwitch::kNotAllowed:
                throw ToolError(
                    kFailed, "crash dumps are a setting of the machine, which this account may not change",
                    "run the command in a command window that was opened as an administrator", "not-allowed");
            case DumpSwitch::kFailed:
                throw ToolError(kFailed,
                                std::string("crash dumps of ") + program + " cannot be switched here", "",
                                "dumps-not-switched");
        }
    }
}

}  // namespace simhost::tool
