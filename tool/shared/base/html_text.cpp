#include "tool/shared/base/html_text.h"

#include "simhost/text.h"

namespace simhost::tool {

std::string htmlEscaped(std::string_view text) {
    // There and back again replaces what is ill-formed.
    const std::string valid = toUtf8(toUtf16(text));
    std::string out;
    out.reserve(valid.size());
    for (const char c : valid) {
        const auto byte = static_cast<unsigned char>(c);
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            case '\'':
                out += "&#39;";
                break;
            default:
                if ((byte < 0x20 && c != '\n' && c != '\t') || byte == 0x7F) {
                    out += "\xEF\xBF\xBD";
                } else {
                    out += c;
                }
        }
    }
    return out;
}

std::string base64(std::span<const std::uint8_t> bytes) {
    constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    out.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::size_t count = bytes.size() - at < 3 ? bytes.size() - at : 3;
        std::uint32_t group = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            group = group << 8 | (i < count ? bytes[at + i] : 0U);
        }
        for (std::size_t i = 0; i < 4; ++i) {
            out += i <= count ? kDigits[group >> (18 - 6 * i) & 63] : '=';
        }
    }
    return out;
}

std::string pngDataUri(std::span<const std::uint8_t> png) {
    return "data:image/png;base64," + base64(png);
}

}  // namespace simhost::tool
