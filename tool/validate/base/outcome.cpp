#include "tool/validate/base/outcome.h"

namespace simhost::tool::validate {

const char* outcomeName(Outcome outcome) noexcept {
    switch (outcome) {
        case Outcome::kPassed:
            return "passed";
        case Outcome::kWarning:
            return "warning";
        case Outcome::kFailed:
            return "failed";
        case Outcome::kCrashed:
            return "crashed";
        case Outcome::kTimedOut:
            return "timed-out";
        case Outcome::kSkipped:
            break;
    }
    return "skipped";
}

Outcome outcomeFromName(std::string_view name) noexcept {
    for (const Outcome outcome : kOutcomes) {
        if (name == outcomeName(outcome)) {
            return outcome;
        }
    }
    return Outcome::kPassed;
}

bool isBad(Outcome outcome) noexcept {
    return outcome == Outcome::kFailed || outcome == Outcome::kCrashed || outcome == Outcome::kTimedOut;
}

}  // namespace simhost::tool::validate
