// UTF-8 and UTF-16 for the simulated host, which shares no code with the plug-in that it examines. Ill-formed
// input becomes U+FFFD. Pure functions; any thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace simhost {

std::string toUtf8(std::u16string_view text);
std::u16string toUtf16(std::string_view text);

/// printf("%s") for codes whose first character is in the highest byte ('AVIV') or in the lowest ("bgra").
/// Characters that cannot be shown are replaced by '?'.
std::string codeText(std::uint32_t code, bool highFirst);

}  // namespace simhost
