// What the lines of the plug-in's log mean, in plain words for users. Static tables; any thread.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace simhost::tool {

enum class Severity {
    kRoutine,  ///< as always
    kTable,    ///< a row of the tables that every start writes
    kNote,     ///< worth knowing when something is amiss
    kFailure,
};

struct LineExplanation {
    std::string_view pattern;  ///< '*' stands for any text, also none
    Severity severity;
    const char* text;
};

/// The first row whose pattern fits the whole text wins.
std::span<const LineExplanation> lineExplanations() noexcept;
/// Null for a line that the plug-in does not write.
const LineExplanation* explainLine(std::string_view text) noexcept;

/// True when `text` as a whole fits `pattern`. Linear for patterns with few stars.
bool fitsPattern(std::string_view text, std::string_view pattern) noexcept;

/// How an answer of the plug-in is to be taken. Several codes other than 0 are how lists end.
Severity resultSeverity(std::string_view selector, std::int32_t result) noexcept;
/// What the answer means to the user, "" when it needs no words.
const char* explainResult(std::string_view selector, std::int32_t result) noexcept;

}  // namespace simhost::tool
