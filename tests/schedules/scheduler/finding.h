// What a schedule is found to do wrong, told to whoever started the exploration. The process that ran the
// schedule ends with it: a thread that hangs cannot be unwound, and memory that was broken is not trusted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace schedules {

/// Exit code of a process that has a finding.
inline constexpr int kFindingExit = 3;

/// One place where the running schedule leaves its default.
struct Deviation {
    std::uint32_t decision;  ///< number of the decision within the schedule, from 1
    std::uint32_t option;    ///< which of the threads that could run was taken, from 0
};

/// Lies in memory that the exploring process shares with the one that started it, so that it outlives a
/// crash.
struct Account {
    static constexpr unsigned kMostPreemptions = 8;
    static constexpr unsigned kMostDeviations = 64;

    std::uint64_t number = 0;     ///< of the running schedule, from 1
    unsigned preemptions = 0;     ///< of the running schedule
    unsigned deviationCount = 0;  ///< of the running schedule
    Deviation deviations[kMostDeviations]{};
    std::uint64_t schedules[kMostPreemptions + 1]{};  ///< that ran to their end, by preemptions
    unsigned done = 0;       ///< all schedules with fewer preemptions than this have run
    std::uint64_t runs = 0;  ///< executions, those included that only lead to others
    unsigned restarts = 0;  ///< how often the exploration began anew for a place that turned out to be shared
    std::uint64_t mostSteps = 0;  ///< of the longest schedule: operations on what threads share
    double seconds = 0;
    char finding[16384]{};  ///< empty: none
};

/// Where findings and counts of this process go.
Account& account() noexcept;
void setAccount(Account& account) noexcept;

/// Ends the schedule and the process.
[[noreturn]] void found(const char* what, const std::string& details);

/// One side of a conflict over memory.
struct AccessAt {
    unsigned thread;
    bool write;
    const void* site;
};
[[noreturn]] void foundAccess(const char* what, const void* at, const AccessAt& now, const AccessAt& earlier);

}  // namespace schedules
