// The answer of a function of the host's suites, as a type of its own: it is never what the importer answers.
#pragma once

#include <cstdint>

#include "host/result_codes.h"

namespace orvantis {

/// Success, or a number of the host's choosing that is only logged.
enum class SuiteResult : std::int32_t { kNoError = host::kSuiteNoError, kFailed = host::kSuiteFailed };

constexpr std::int32_t numberOf(SuiteResult result) noexcept {
    return static_cast<std::int32_t>(result);
}

}  // namespace orvantis
