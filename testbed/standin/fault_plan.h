// Which calls are to fail, by the text of ORVANTIS_STANDIN_FAIL.
//
//     plan  = [ entry { "," entry } ]            blanks round an entry are ignored, and so are empty entries
//     entry = function ":" calls [ "=" code ]    function: one of kFunctionNames
//           | "#" anything                       a remark; changing it makes the text differ, which restarts
//           the counting
//     calls = n | n "+" | "*"                    the n-th call (from 1), the n-th and all after it, every
//     call code  = a 32-bit decimal number, not 0     without it Error::kInjectedFault
//
// Called by: the library object, once a call. Any thread; the counters are guarded inside.

#pragma once

#include <array>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string_view>
#include <vector>

#include "standin/functions.h"

namespace orvantis::standin {

class FaultPlan {
 public:
    // Throws a runtime error that names the entry when the text does not follow the grammar: a plan that was
    // misspelt must not pass for one that never struck.
    explicit FaultPlan(std::string_view text);

    // Counts one call of the function; the code it has to fail with, or nothing. The first entry that fits
    // counts.
    std::optional<std::int32_t> next(Function function);

 private:
    struct Rule {
        Function function;
        std::uint64_t firstCall;
        std::uint64_t lastCall;
        std::int32_t code;
    };

    static Rule parseEntry(std::string_view entry);

    std::vector<Rule> m_rules;
    std::mutex m_mutex;  // guards the counters
    std::array<std::uint64_t, kFunctionCount> m_calls{};
};

}  // namespace orvantis::standin
