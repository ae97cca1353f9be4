#include "diag/format.h"

#include <cctype>
#include <cstdarg>
#include <cstdio>

namespace orvantis {

namespace {

// The caller measures with one argument list and formats with a second one, since vsnprintf uses a list up.
ORVANTIS_PRINTF(2, 0)
std::string formatMeasured(int length, const char* format, std::va_list arguments) {
    if (length < 0) {
        return {};
    }
    // One place more than the text needs: vsnprintf always ends its output with a NUL.
    std::string text(static_cast<std::size_t>(length) + 1, '\0');
    (void)std::vsnprintf(text.data(), text.size(), format, arguments);
    // An argument of "%c" may itself be a NUL; the text ends there, as it would for any reader of the C
    // string.
    text.resize(text.find('\0'));
    return text;
}

}  // namespace

std::string formatString(const char* format, ...) {
    std::va_list measured;
    va_start(measured, format);
    const int length = std::vsnprintf(nullptr, 0, format, measured);
    va_end(measured);

    std::va_list arguments;
    va_start(arguments, format);
    std::string text;
    try {
        text = formatMeasured(length, format, arguments);
    } catch (...) {
        va_end(arguments);
        throw;
    }
    va_end(arguments);
    return text;
}

std::string fourccToString(std::uint32_t code, bool reversed) {
    std::string text;
    text.reserve(20);  // four times "[255]"
    for (unsigned i = 0; i < 4; ++i) {
        const unsigned shift = 8 * (reversed ? 3 - i : i);
        const unsigned byte = (code >> shift) & 0xFFu;
        if (std::isprint(static_cast<int>(byte)) != 0) {
            text += static_cast<char>(byte);
        } else {
            text += '[';
            text += std::to_string(byte);
            text += ']';
        }
    }
    return text;
}

}  // namespace orvantis
