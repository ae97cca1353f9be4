// Builds the message of OrvantisError. Called wherever a call into the codec library fails, on the caller's
// thread; never opens a session: the library's error texts are there without one.
#include "video/orvantis_error.h"

#include "diag/format.h"
#include "video/orvantis_common64.h"

namespace orvantis {

namespace {

std::string messageOf(const std::string& context, std::int32_t resultCode) {
    // The library has a text for every value; a null answer still must not end the host.
    const char* text = orvantis_get_string(kOrvantisStringErrorText, static_cast<std::uint32_t>(resultCode));
    return formatString("Orvantis error (%d): %s: %s", static_cast<int>(resultCode),
                        text != nullptr ? text : "", context.c_str());
}

}  // namespace

OrvantisError::OrvantisError(const std::string& context, std::int32_t resultCode)
    : std::runtime_error(messageOf(context, resultCode)), code(resultCode) {}

}  // namespace orvantis
