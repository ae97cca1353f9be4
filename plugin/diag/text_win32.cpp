// UTF-8 and UTF-16 by the system's own conversion, without flags: ill-formed input becomes U+FFFD.

#include <windows.h>

#include <limits>
#include <stdexcept>

#include "diag/text.h"

namespace orvantis {

static_assert(sizeof(wchar_t) == sizeof(char16_t));

namespace {

int checkedLength(std::size_t length) {
    if (length > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        throw std::length_error("text too long to convert");
    }
    return static_cast<int>(length);
}

}  // namespace

std::string utf8FromUtf16(std::u16string_view text) {
    const auto* source = reinterpret_cast<const wchar_t*>(text.data());
    const int length = checkedLength(text.size());
    std::string result;
    if (length > 0) {
        const int bytes = WideCharToMultiByte(CP_UTF8, 0, source, length, nullptr, 0, nullptr, nullptr);
        result.resize(static_cast<std::size_t>(bytes));
        (void)WideCharToMultiByte(CP_UTF8, 0, source, length, result.data(), bytes, nullptr, nullptr);
    }
    return result;
}

std::u16string utf16FromUtf8(std::string_view text) {
    const int length = checkedLength(text.size());
    std::u16string result;
    if (length > 0) {
        const int units = MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0);
        result.resize(static_cast<std::size_t>(units));
        (void)MultiByteToWideChar(CP_UTF8, 0, text.data(), length, reinterpret_cast<wchar_t*>(result.data()),
                                  units);
    }
    return result;
}

}  // namespace orvantis
