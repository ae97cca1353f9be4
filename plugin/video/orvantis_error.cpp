// Builds the message of OrvantisError. Called wherever a call into the codec library fails, on the caller's
// thread; never opens a session: the library's error texts are there without one.
#include "video/orvantis_error.h"

#include "diag/format.h"

namespace orvantis {

namespace {

std::string messageOf(const std::string& context, CodecResult result) {
    // The library has a text for every value; a null answer still must not end the host.
    const char* text = orvantis_get_string(kOrvantisStringErrorText, static_cast<std::uint32_t>(result));
    return formatString("Orvantis error (%d): %s: %s", static_cast<int>(result), text != nullptr ? text : "",
                        context.c_str());
}

}  // namespace

OrvantisError::OrvantisError(const std::string& context, CodecResult result)
    : std::runtime_error(messageOf(context, result)), code(result) {}

}  // namespace orvantis
