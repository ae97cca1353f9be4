// UTF-8 and UTF-16: host paths and event texts are UTF-16, the log and all messages are UTF-8. Ill-formed
// input becomes U+FFFD, as the system's own conversion with code page 65001 does it. Never fails except for
// memory. Any thread.
#pragma once

#include <string>
#include <string_view>

namespace orvantis {

std::string utf8FromUtf16(std::u16string_view text);
std::u16string utf16FromUtf8(std::string_view text);

}  // namespace orvantis
