#include "simhost/text.h"

#include <cstddef>
#include <cstdint>

namespace simhost {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

void appendUtf8(std::string& out, char32_t c) {
    const auto byte = [&out](char32_t value) {
        out.push_back(static_cast<char>(static_cast<unsigned char>(value)));
    };
    if (c < 0x80) {
        byte(c);
    } else if (c < 0x800) {
        byte(0xC0 | (c >> 6));
        byte(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        byte(0xE0 | (c >> 12));
        byte(0x80 | ((c >> 6) & 0x3F));
        byte(0x80 | (c & 0x3F));
    } else {
        byte(0xF0 | (c >> 18));
        byte(0x80 | ((c >> 12) & 0x3F));
        byte(0x80 | ((c >> 6) & 0x3F));
        byte(0x80 | (c & 0x3F));
    }
}

// Takes one code point off the front of `text`; a sequence that is cut short, too long, a surrogate or above
// the last code point costs one byte and yields the replacement character.
char32_t takeUtf8(std::string_view& text) {
    const auto at = [&text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = at(0);
    std::size_t length = 1;
    char32_t c = lead;
    char32_t lowest = 0;
    if (lead >= 0x80) {
        if (lead >= 0xC2 && lead < 0xE0) {
            length = 2, c = lead & 0x1Fu, lowest = 0x80;
        } else if (lead >= 0xE0 && lead < 0xF0) {
            length = 3, c = lead & 0x0Fu, lowest = 0x800;
        } else if (lead >= 0xF0 && lead < 0xF5) {
            length = 4, c = lead & 0x07u, lowest = 0x10000;
        } else {
            text.remove_prefix(1);
            return kReplacement;
        }
        bool good = text.size() >= length;
        for (std::size_t i = 1; good && i < length; ++i) {
            good = (at(i) & 0xC0u) == 0x80;
            c = (c << 6) | (at(i) & 0x3Fu);
        }
        if (!good || c < lowest || c > 0x10FFFF || (c >= 0xD800 && c < 0xE000)) {
            text.remove_prefix(1);
            return kReplacement;
        }
    }
    text.remove_prefix(length);
    return c;
}

}  // namespace

std::string toUtf8(std::u16string_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t c = text[i];
        if (c >= 0xD800 && c < 0xE000) {
            const bool pair =
                c < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000;
            c = pair ? 0x10000 + ((c - 0xD800) << 10) + (char32_t{text[i + 1]} - 0xDC00) : kReplacement;
            i += pair ? 1 : 0;
        }
        appendUtf8(out, c);
    }
    return out;
}

std::u16string toUtf16(std::string_view text) {
    std::u16string out;
    while (!text.empty()) {
        const char32_t c = takeUtf8(text);
        if (c >= 0x10000) {
            out.push_back(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
            out.push_back(static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF)));
        } else {
            out.push_back(static_cast<char16_t>(c));
        }
    }
    return out;
}

std::string codeText(std::uint32_t code, bool highFirst) {
    std::string out;
    for (unsigned i = 0; i < 4; ++i) {
        const unsigned shift = highFirst ? 24 - 8 * i : 8 * i;
        const auto c = static_cast<unsigned char>(code >> shift);
        out.push_back(c >= 0x20 && c < 0x7F ? static_cast<char>(c) : '?');
    }
    return out;
}

}  // namespace simhost
