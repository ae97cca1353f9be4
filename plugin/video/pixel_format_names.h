// The host's identifiers of its pixel formats, for log lines and error texts.
#pragma once

#include <cstdint>

namespace orvantis {

/// "PrPixelFormat_BGRA_4444_8u" and so on; "????" for a value that the host does not define. Static string.
const char* pixelFormatName(std::uint32_t pixelFormat) noexcept;

}  // namespace orvantis
