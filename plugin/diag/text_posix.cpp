// The native twin of diag/text_win32.cpp: the same results as the system's conversion with code page 65001
// and no flags. Each lone surrogate, and each longest ill-formed part of a sequence, becomes one U+FFFD.

#include <cstdint>

#include "diag/text.h"

namespace orvantis {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

void appendUtf8(std::string& out, char32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
        return;
    }
    if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
    } else {
        if (c < 0x10000) {
            out += static_cast<char>(0xE0 | (c >> 12));
        } else {
            out += static_cast<char>(0xF0 | (c >> 18));
            out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        }
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    }
    out += static_cast<char>(0x80 | (c & 0x3F));
}

void appendUtf16(std::u16string& out, char32_t c) {
    if (c < 0x10000) {
        out += static_cast<char16_t>(c);
        return;
    }
    out += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
    out += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
}

bool isHighSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

bool isLowSurrogate(char16_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

// What may follow a lead byte: how many bytes, and the range of the first of them, which rules out overlong
// forms, surrogates and values above U+10FFFF. The rest are 80 to BF.
struct Lead {
    int following = -1;  ///< -1: no lead byte
    unsigned low = 0x80;
    unsigned high = 0xBF;
    char32_t bits = 0;
};

Lead lead(unsigned byte) {
    if (byte < 0x80) {
        return {0, 0, 0, byte};
    }
    if (byte >= 0xC2 && byte <= 0xDF) {
        return {1, 0x80, 0xBF, byte & 0x1F};
    }
    if (byte >= 0xE0 && byte <= 0xEF) {
        return {2, byte == 0xE0 ? 0xA0u : 0x80u, byte == 0xED ? 0x9Fu : 0xBFu, byte & 0x0F};
    }
    if (byte >= 0xF0 && byte <= 0xF4) {
        return {3, byte == 0xF0 ? 0x90u : 0x80u, byte == 0xF4 ? 0x8Fu : 0xBFu, byte & 0x07};
    }
    return {};
}

// Takes one character or one ill-formed part from the front of `text`.
char32_t takeCharacter(std::string_view& text) {
    const auto at = [&text](std::size_t i) {
        return static_cast<unsigned>(static_cast<unsigned char>(text[i]));
    };
    const Lead first = lead(at(0));
    if (first.following < 0) {
        text.remove_prefix(1);
        return kReplacement;
    }
    char32_t c = first.bits;
    std::size_t used = 1;
    for (int i = 0; i < first.following; ++i, ++used) {
        const unsigned low = i == 0 ? first.low : 0x80u;
        const unsigned high = i == 0 ? first.high : 0xBFu;
        if (used == text.size() || at(used) < low || at(used) > high) {
            text.remove_prefix(used);
            return kReplacement;
        }
        c = (c << 6) | (at(used) & 0x3F);
    }
    text.remove_prefix(used);
    return c;
}

}  // namespace

std::string utf8FromUtf16(std::u16string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        if (isHighSurrogate(unit) && i + 1 < text.size() && isLowSurrogate(text[i + 1])) {
            ++i;
            appendUtf8(out, 0x10000 + ((static_cast<char32_t>(unit) - 0xD800) << 10) + (text[i] - 0xDC00u));
        } else if (isHighSurrogate(unit) || isLowSurrogate(unit)) {
            appendUtf8(out, kReplacement);
        } else {
            appendUtf8(out, unit);
        }
    }
    return out;
}

std::u16string utf16FromUtf8(std::string_view text) {
    std::u16string out;
    out.reserve(text.size());
    while (!text.empty()) {
        appendUtf16(out, takeCharacter(text));
    }
    return out;
}

}  // namespace orvantis
