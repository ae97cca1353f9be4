// The exception that turns a non-zero result of the codec library into a readable message.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace orvantis {

/// "Orvantis error (<code>): <the library's text>: <context>". The context names the call that failed.
class OrvantisError : public std::runtime_error {
 public:
    OrvantisError(const std::string& context, std::int32_t resultCode);

    std::int32_t code;  ///< the library's result code
};

}  // namespace orvantis
