// Text for functions of Windows that take wide characters. For files that talk to Windows.
#pragma once

#include <string>

#include "simhost/text.h"

namespace simhost::tool {

inline std::wstring wideText(const std::string& utf8) {
    const std::u16string text = toUtf16(utf8);
    return {text.begin(), text.end()};
}

}  // namespace simhost::tool
