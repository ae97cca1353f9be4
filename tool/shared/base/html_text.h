// Text and pictures for a page that stands alone. Pure functions; any thread.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace simhost::tool {

/// For text and quoted attributes. Bytes that are no UTF-8, and control characters, become U+FFFD.
std::string htmlEscaped(std::string_view text);
std::string base64(std::span<const std::uint8_t> bytes);
/// "data:image/png;base64,…"
std::string pngDataUri(std::span<const std::uint8_t> png);

}  // namespace simhost::tool
