#include "tool/soak/session_group.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>

#include "tool/shared/base/child_process.h"
#include "tool/shared/base/crash_watch.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/process_usage.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/base/tool_platform.h"

namespace simhost::tool {
namespace {

// The system's pool has as many threads as it likes by then.
constexpr std::uint64_t kSessionsUntilWarm = 200;
constexpr std::uint64_t kMoreHandles = 100;

// The number of the session under way, with the system before the plug-in is called.
class AtFile {
 public:
    explicit AtFile(const std::string& path) : m_file(path, std::ios::binary) {
        if (!m_file) {
            throw ToolError(kNoOutput, "cannot write '" + path + "'");
        }
    }
    void set(std::uint64_t number) {
        char text[24];
        (void)std::snprintf(text, sizeof text, "%-20llu\n", static_cast<unsigned long long>(number));
        m_file.seekp(0);
        m_file << text << std::flush;
    }

 private:
    std::ofstream m_file;
};

// The plug-in and all that its sessions need.
class Theatre {
 public:
    Theatre(const GlobalOptions& global, const SessionWork& work, const std::string& folder)
        : m_plugin(loadPlugin(global)) {
        const std::string profile = folder + "/profile";
        makeFolder(profile);
        makeFolder(folder + "/files");
        // Read by the plug-in in its first call.
        const bool log = sessionWritesLog(work.seed, work.first);
        m_log.emplace(log, log ? profile : std::string(), reinterpret_cast<const void*>(m_plugin->entry()));
        const bool standin = global.codecFolder.empty() && !codecFolder(global).empty();
        m_stage.emplace(*m_plugin, folder + "/files",
                        standin ? loadedLibrary(codecLibraryName()) : std::string());
    }
    SessionStage& stage() { return *m_stage; }

 private:
    std::unique_ptr<Plugin> m_plugin;
    std::optional<LogSwitch> m_log;
    std::optional<SessionStage> m_stage;
};

// "block:3,crash:7": "crash" in session 7.
std::string sabotageOf(const SessionWork& work, std::uint64_t number) {
    std::istringstream list(work.sabotage);
    for (std::string entry; std::getline(list, entry, ',');) {
        const std::size_t colon = entry.find(':');
        if (colon != std::string::npos && entry.substr(colon + 1) == std::to_string(number)) {
            return entry.substr(0, colon);
        }
    }
    return {};
}

}  // namespace

void playGroup(const GlobalOptions& global, const SessionWork& work, const std::string& folderUtf8) {
    endWithParent();
    watchForCrashes(folderUtf8 + "/" + kGroupCrash, "");
    AtFile at(folderUtf8 + "/" + kGroupAt);
    std::ofstream wrong(pathFromUtf8(folderUtf8 + "/" + kGroupWrong), std::ios::binary);
    Theatre theatre(global, work, folderUtf8);
    const auto begin = std::chrono::steady_clock::now();
    SessionCounts counts;
    const auto tell = [&](std::uint64_t number, const std::string& what) {
        wrong << nlohmann::json{{"session", number}, {"what", what}}.dump(
                     -1, ' ', false, nlohmann::json::error_handler_t::replace)
              << "\n"
              << std::flush;
    };
    std::uint64_t warmHandles = 0;
    for (std::uint64_t i = 0; i < work.count; ++i) {
        const std::uint64_t number = work.first + i;
        at.set(number);
        const SessionOutcome outcome =
            theatre.stage().play(planSession(work.seed, number), nullptr, sabotageOf(work, number));
        counts.add(outcome.counts);
        for (const std::string& violation : outcome.violations) {
            tell(number, violation);
        }
        if (i == kSessionsUntilWarm) {
            warmHandles = processUsage().handles;
        }
    }
    const std::uint64_t handles = processUsage().handles;
    if (warmHandles != 0 && handles > warmHandles + kMoreHandles) {
        tell(work.first + work.count - 1, "handles: " + std::to_string(warmHandles) + " after " +
                                              std::to_string(kSessionsUntilWarm) + " sessions, " +
                                              std::to_string(handles) + " at the end of the group");
    }
    nlohmann::json report;
    for (const NamedCount& count : kSessionCounts) {
        report[count.name] = counts.*count.member;
    }
    report["seconds"] = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    std::ofstream(pathFromUtf8(folderUtf8 + "/" + kGroupReport), std::ios::binary) << report.dump() << "\n";
}

bool playOne(const GlobalOptions& global, const SessionWork& work, std::string& log) {
    const TemporaryPath folder(makeTemporaryFolder());
    Theatre theatre(global, work, folder.path());
    return theatre.stage()
        .play(planSession(work.seed, work.first), &log, sabotageOf(work, work.first))
        .violations.empty();
}

}  // namespace simhost::tool
