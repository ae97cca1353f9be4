// A validation in words, for people and for programs. Pure functions; any thread.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "tool/validate/base/check.h"
#include "tool/validate/base/outcome.h"

namespace simhost::tool::validate {

struct Validation {
    std::string plugin = {};
    std::vector<std::string> clips = {};  ///< empty: those of the tool's own making
    int level = 5;
    std::uint64_t seed = 1;
    std::string libraryFolder = {};  ///< as it was named; empty for none
    std::string versions = {};       ///< of tool and system, one line
    std::vector<CheckResult> results = {};
};

struct OutcomeCounts {
    std::array<std::size_t, 6> numbers{};
    std::size_t of(Outcome outcome) const { return numbers[static_cast<std::size_t>(outcome)]; }
    std::size_t all() const;
    std::size_t bad() const { return of(Outcome::kFailed) + of(Outcome::kCrashed) + of(Outcome::kTimedOut); }
    /// At least one check came to an end, and none went wrong.
    bool success() const { return bad() == 0 && of(Outcome::kPassed) + of(Outcome::kWarning) > 0; }
};
OutcomeCounts countOutcomes(const std::vector<CheckResult>& results);

/// What is told of one check, several lines: a line alone when it passed.
std::string resultText(const Validation& validation, const CheckResult& result);
/// "SUCCESS: 97 checks: 90 passed, 2 with warnings, 5 skipped" or "FAILURE: …", without a line end.
std::string summaryText(const OutcomeCounts& counts);
/// What was skipped, a line or two for each reason in the order in which they came; empty without.
std::string skippedText(const std::vector<CheckResult>& results);
/// The command that does exactly this again.
std::string againText(const Validation& validation, const CheckResult& result);

std::string jsonReport(const Validation& validation);
std::string junitReport(const Validation& validation);
/// A page that needs nothing else.
std::string htmlReport(const Validation& validation);

/// The list of checks, for people, for programs, and as the table of the documentation.
std::string listText(const std::vector<Check>& checks);
std::string listJson(const std::vector<Check>& checks);
std::string listMarkdown(const std::vector<Check>& checks);
/// All that is known of one.
std::string explainText(const Check& check);

}  // namespace simhost::tool::validate
