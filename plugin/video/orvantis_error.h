// The exception that turns a non-zero result of the codec library into a readable message.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "video/orvantis_common64.h"

namespace orvantis {

/// What a function of the codec library answers; every value but success is a code of its own.
enum class CodecResult : std::int32_t { kSuccess = kOrvantisSuccess };

/// "Orvantis error (<code>): <the library's text>: <context>". The context names the call that failed.
class OrvantisError : public std::runtime_error {
 public:
    OrvantisError(const std::string& context, CodecResult result);

    CodecResult code;
};

}  // namespace orvantis
