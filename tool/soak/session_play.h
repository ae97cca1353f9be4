// Plays one planned session with a loaded plug-in and tells what was wrong in it. Main thread only; makes the
// threads that the plan asks for.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "simhost/plugin.h"
#include "simhost/shared_library.h"
#include "tool/soak/session_files.h"
#include "tool/soak/session_plan.h"

namespace simhost::tool {

/// What sessions have done, to show that they do something.
struct SessionCounts {
    std::uint64_t sessions = 0;
    std::uint64_t calls = 0;
    std::uint64_t refused = 0;       ///< calls answered with another code than success
    std::uint64_t frames = 0;        ///< delivered
    std::uint64_t asyncFrames = 0;   ///< of these, by asynchronous importers
    std::uint64_t sampleFrames = 0;  ///<
    std::uint64_t faults = 0;        ///< that struck, of the host and of the file
    std::uint64_t damaged = 0;       ///< sessions with a damaged file
    std::uint64_t threaded = 0;      ///< sessions with several threads

    void add(const SessionCounts& other);
};

/// The counts with their names, in order.
struct NamedCount {
    const char* name;
    std::uint64_t SessionCounts::*member;
};
extern const std::vector<NamedCount> kSessionCounts;

struct SessionOutcome {
    std::vector<std::string> violations;  ///< what was wrong, one line each; "rule: ..." for the host's rules
    SessionCounts counts;
};

/// What all sessions of a process share.
class SessionStage {
 public:
    /// The folder gets the files to play. `codecFile` is the stand-in codec library, whose account is looked
    /// at; empty without one. `plugin` must outlive the stage. Throws ToolError.
    SessionStage(const Plugin& plugin, std::string folderUtf8, const std::string& codecFile);
    SessionStage(const SessionStage&) = delete;
    SessionStage& operator=(const SessionStage&) = delete;
    ~SessionStage();

    /// `log`, unless null, gets a line for everything that happens. `sabotage` is for the tests of this
    /// command: "block", "handle", "file", "twice", "code", "crash" or "hang" in this session.
    SessionOutcome play(const SessionPlan& plan, std::string* log, const std::string& sabotage = {});

 private:
    std::string placeFile(const SessionPlan& plan);
    std::string codecLeftovers(const SessionPlan& plan) const;

    const Plugin& m_plugin;
    std::string m_folder;
    SessionFiles m_files;
    SharedLibrary m_codec;
    std::int32_t (*m_codecClose)() = nullptr;  // null without the stand-in
};

}  // namespace simhost::tool
