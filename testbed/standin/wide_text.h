// UTF-8 and UTF-16 for the few Windows files of the stand-in. Text that is not valid becomes U+FFFD. Any
// thread.

#pragma once

#include <string>

namespace orvantis::standin {

std::wstring wideFromUtf8(const std::string& text);
std::string utf8FromWide(const std::wstring& text);

}  // namespace orvantis::standin
