// What became of one check. Values only; any thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace simhost::tool::validate {

enum class Outcome { kPassed, kWarning, kFailed, kCrashed, kTimedOut, kSkipped };
inline constexpr Outcome kOutcomes[] = {Outcome::kPassed,  Outcome::kWarning,  Outcome::kFailed,
                                        Outcome::kCrashed, Outcome::kTimedOut, Outcome::kSkipped};

/// "passed", "warning", "failed", "crashed", "timed-out", "skipped"
const char* outcomeName(Outcome outcome) noexcept;
/// kPassed for a word that is none.
Outcome outcomeFromName(std::string_view name) noexcept;
/// Failed, crashed or timed out.
bool isBad(Outcome outcome) noexcept;

/// One thing that is not as the rule says.
struct Finding {
    bool warning = false;
    std::string call = {};   ///< "imGetSourceVideo, frame 3 in bgra"
    std::string field = {};  ///< "imSourceVideoRec.outFrame"; empty when it is about none
    std::string clip = {};   ///< path; empty when it is about none
    std::string seen = {};   ///< what the plug-in did

    friend bool operator==(const Finding&, const Finding&) = default;
};

struct CheckResult {
    std::string id;
    Outcome outcome = Outcome::kPassed;
    std::uint64_t seed = 0;
    double seconds = 0;
    std::vector<Finding> findings;
    std::string reason;              ///< why it was skipped; how it crashed
    std::vector<std::string> calls;  ///< that led to the crash, nearest first: "module+0x1234"
    std::string output;              ///< the end of what the process printed before it crashed
    std::string dump;                ///< path of the minidump; empty without one
};

}  // namespace simhost::tool::validate
