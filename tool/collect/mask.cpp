#include "tool/collect/mask.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <optional>
#include <utility>

namespace simhost::tool {
namespace {

// Upper case to lower case of the alphabets that have both, one letter to one letter.
char32_t folded(char32_t c) {
    if ((c >= U'A' && c <= U'Z') || (c >= 0xC0 && c <= 0xDE && c != 0xD7) || (c >= 0x391 && c <= 0x3A9) ||
        (c >= 0x410 && c <= 0x42F)) {
        return c + 0x20;
    }
    if (c >= 0x400 && c <= 0x40F) {
        return c + 0x50;
    }
    const bool evenUpper = (c >= 0x100 && c <= 0x137) || (c >= 0x14A && c <= 0x177) ||
                           (c >= 0x460 && c <= 0x481) || (c >= 0x48A && c <= 0x4BF) ||
                           (c >= 0x4D0 && c <= 0x52F);
    const bool oddUpper = (c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E);
    return evenUpper ? c | 1U : oddUpper ? c + (c & 1U) : c;
}

struct Letter {
    char32_t code = 0;
    std::size_t bytes = 0;  ///< 0: none
};

std::uint8_t byteAt(std::string_view text, std::size_t at) {
    return static_cast<std::uint8_t>(text[at]);
}

Letter utf8At(std::string_view text, std::size_t at) {
    if (at >= text.size()) {
        return {};
    }
    const std::uint8_t first = byteAt(text, at);
    const std::size_t bytes = first < 0x80    ? 1
                              : first >= 0xF0 ? 4
                              : first >= 0xE0 ? 3
                              : first >= 0xC0 ? 2
                                              : 0;
    if (bytes == 0 || at + bytes > text.size()) {
        return {};
    }
    char32_t code = bytes == 1 ? first : first & (0x7FU >> bytes);
    for (std::size_t i = 1; i < bytes; ++i) {
        code = code << 6 | (byteAt(text, at + i) & 0x3FU);
    }
    return {code, bytes};
}

std::optional<unsigned> hexAt(std::string_view text, std::size_t at, std::size_t digits) {
    unsigned out = 0;
    for (std::size_t i = 0; i < digits; ++i) {
        const char c = at + i < text.size() ? text[at + i] : ' ';
        const int value = c >= '0' && c <= '9'   ? c - '0'
                          : c >= 'a' && c <= 'f' ? c - 'a' + 10
                          : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                                 : -1;
        if (value < 0) {
            return std::nullopt;
        }
        out = out << 4 | static_cast<unsigned>(value);
    }
    return out;
}

// "%C3%BC"
Letter percentAt(std::string_view text, std::size_t at) {
    std::string bytes;
    std::size_t length = 0;
    while (bytes.size() < 4 && at + length < text.size() && text[at + length] == '%') {
        const auto value = hexAt(text, at + length + 1, 2);
        if (!value) {
            break;
        }
        bytes += static_cast<char>(*value);
        length += 3;
        const Letter letter = utf8At(bytes, 0);
        if (letter.bytes == bytes.size()) {
            return {letter.code, length};
        }
    }
    return {};
}

// "ü" as JSON escapes it, in one unit or two; the short escapes are those of separators.
Letter jsonAt(std::string_view text, std::size_t at) {
    const auto unit = [text](std::size_t place) {
        return text.substr(std::min(place, text.size()), 2) == "\\u" ? hexAt(text, place + 2, 4)
                                                                     : std::nullopt;
    };
    const auto first = unit(at);
    if (!first) {
        return {};
    }
    const auto second = *first >= 0xD800 && *first < 0xDC00 ? unit(at + 6) : std::nullopt;
    return second ? Letter{0x10000U + ((*first - 0xD800U) << 10) + (*second - 0xDC00U), 12}
                  : Letter{*first, 6};
}

Letter entityAt(std::string_view text, std::size_t at) {
    constexpr std::pair<std::string_view, char32_t> kEntities[] = {{"&amp;", U'&'},   {"&#39;", U'\''},
                                                                   {"&apos;", U'\''}, {"&quot;", U'"'},
                                                                   {"&lt;", U'<'},    {"&gt;", U'>'}};
    for (const auto& [entity, code] : kEntities) {
        if (text.substr(at).starts_with(entity)) {
            return {code, entity.size()};
        }
    }
    return {};
}

template <bool kBig>
Letter utf16At(std::string_view text, std::size_t at) {
    const auto unit = [text](std::size_t place) -> char32_t {
        const unsigned one = byteAt(text, place);
        const unsigned other = byteAt(text, place + 1);
        return kBig ? one << 8 | other : other << 8 | one;
    };
    if (at + 2 > text.size()) {
        return {};
    }
    const char32_t first = unit(at);
    if (first < 0xD800 || first >= 0xDC00 || at + 4 > text.size()) {
        return {first, 2};
    }
    return {0x10000U + ((first - 0xD800U) << 10) + (unit(at + 2) - 0xDC00U), 4};
}

using Reader = Letter (*)(std::string_view, std::size_t);

// The forms in which a letter may stand in text of one encoding. Escapes first, which begin with letters.
constexpr std::array<Reader, 4> kUtf8 = {percentAt, jsonAt, entityAt, utf8At};
constexpr std::array<Reader, 1> kUtf16Little = {utf16At<false>};
constexpr std::array<Reader, 1> kUtf16Big = {utf16At<true>};

bool isSeparator(char32_t c) {
    return c == U'/' || c == U'\\';
}

// One separator of a path may be several characters of a text: "\\" in JSON, "\\\\" in JSON inside JSON.
template <typename Readers>
std::size_t separatorsAt(std::string_view text, std::size_t at, const Readers& readers) {
    std::size_t bytes = 0;
    for (bool found = true; found && at + bytes < text.size();) {
        found = false;
        for (const Reader read : readers) {
            const Letter letter = read(text, at + bytes);
            if (letter.bytes > 0 && isSeparator(letter.code) && !(letter.bytes > 1 && letter.code == 0)) {
                bytes += letter.bytes;
                found = true;
                break;
            }
        }
    }
    return bytes;
}

// How many bytes of the text from `at` on are the pattern; 0 for none.
template <typename Readers>
std::size_t matchAt(std::string_view text, std::size_t at, std::u32string_view pattern,
                    const Readers& readers) {
    std::size_t bytes = 0;
    for (const char32_t wanted : pattern) {
        if (wanted == U'/') {
            const std::size_t separators = separatorsAt(text, at + bytes, readers);
            if (separators == 0) {
                return 0;
            }
            bytes += separators;
            continue;
        }
        bool found = false;
        for (const Reader read : readers) {
            const Letter letter = at + bytes < text.size() ? read(text, at + bytes) : Letter{};
            if (letter.bytes > 0 && folded(letter.code) == wanted) {
                bytes += letter.bytes;
                found = true;
                break;
            }
        }
        if (!found) {
            return 0;
        }
    }
    return bytes;
}

bool isWordByte(std::string_view text, std::size_t at) {
    const char c = at < text.size() ? text[at] : ' ';
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c & 0x80) != 0;
}

// Of the letter before `at`; the end of an escape is none, though it looks like one.
bool isWordBefore(std::string_view text, std::size_t at) {
    const auto back = [text, at](std::size_t bytes) {
        return at >= bytes ? text.substr(at - bytes) : std::string_view();
    };
    const bool escaped =
        (back(3).starts_with('%') && hexAt(text, at - 2, 2)) ||
        (back(6).starts_with("\\u") && hexAt(text, at - 4, 4)) ||
        (back(2).starts_with('\\') && std::string_view("bfnrt").find(text[at - 1]) != std::string_view::npos);
    return at > 0 && !escaped && isWordByte(text, at - 1);
}

std::u32string patternOf(std::string_view utf8, bool path) {
    std::u32string out;
    for (std::size_t at = 0; at < utf8.size();) {
        const Letter letter = utf8At(utf8, at);
        at += std::max<std::size_t>(letter.bytes, 1);
        const bool separator = path && isSeparator(letter.code);
        if (!separator || out.empty() || out.back() != U'/') {
            out += separator ? U'/' : folded(letter.code);
        }
    }
    while (path && !out.empty() && out.back() == U'/') {
        out.pop_back();
    }
    return out;
}

std::string encoded(std::string_view ascii, bool wide, bool big) {
    std::string out;
    for (const char c : ascii) {
        out += wide && big ? std::string{'\0', c} : wide ? std::string{c, '\0'} : std::string{c};
    }
    return out;
}

}  // namespace

Mask::Mask(const PersonalNames& names) {
    const auto add = [this](const std::u32string& text, bool home, bool alone) {
        const bool known =
            std::ranges::any_of(m_patterns, [&](const Pattern& each) { return each.text == text; });
        if (!text.empty() && !known) {
            m_patterns.push_back({text, home, alone});
        }
    };
    for (const std::string& home : names.homes) {
        const std::u32string text = patternOf(home, true);
        // "/" and "C:/" are no one's own.
        if (text.find_first_not_of(U"/:") != std::u32string::npos && text.size() > 2) {
            add(text, true, false);
        }
    }
    constexpr std::size_t kShort = 2;
    for (const std::string& user : names.users) {
        const std::u32string text = patternOf(user, false);
        add(text, false, text.size() <= kShort);
    }
    std::ranges::stable_sort(m_patterns, [](const Pattern& a, const Pattern& b) {
        return a.home != b.home ? a.home : a.text.size() > b.text.size();
    });
}

std::string Mask::apply(std::string_view text) const {
    std::string out;
    out.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        std::size_t length = 0;
        for (const Pattern& pattern : m_patterns) {
            const std::string_view masked = pattern.home ? kMaskedHome : kMaskedName;
            if ((length = matchAt(text, at, pattern.text, kUtf8)) > 0) {
                if (pattern.alone && (isWordBefore(text, at) || isWordByte(text, at + length))) {
                    length = 0;
                    continue;
                }
                out += masked;
            } else if ((length = matchAt(text, at, pattern.text, kUtf16Little)) > 0) {
                out += encoded(masked, true, false);
            } else if ((length = matchAt(text, at, pattern.text, kUtf16Big)) > 0) {
                out += encoded(masked, true, true);
            }
            if (length > 0) {
                break;
            }
        }
        if (length == 0) {
            out += text[at++];
        }
        at += length;
    }
    return out;
}

std::string Mask::applyToPage(std::string_view page) const {
    // Values that are words of the program; all others may tell of the user.
    constexpr std::string_view kOwnValues[] = {"class",   "role", "scope", "lang",
                                               "charset", "name", "type",  "src",
                                               "viewBox", "d",    "id",    "preserveAspectRatio"};
    constexpr std::string_view kStyle = "<style>";
    std::string out;
    const auto take = [&out, &page](std::size_t end) {
        out += page.substr(0, end);
        page.remove_prefix(std::min(end, page.size()));
    };
    while (!page.empty()) {
        const std::size_t text = std::min(page.find('<'), page.size());
        out += apply(page.substr(0, text));
        page.remove_prefix(text);
        if (page.starts_with(kStyle)) {
            take(page.find("</style>"));
        }
        // Texts have their '<' escaped and values their '"', so this is a tag of the program's.
        const std::size_t tag = std::min(page.find('>'), page.size());
        std::size_t left = tag;
        for (std::size_t value; (value = page.find("=\"")) < left;) {
            const std::size_t end = page.find('"', value + 2);
            if (end == std::string_view::npos || end >= left) {
                break;
            }
            const std::string_view named = page.substr(0, value);
            const std::string_view name = named.substr(named.find_last_of(' ') + 1);
            const bool own = std::ranges::find(kOwnValues, name) != std::end(kOwnValues);
            take(value + 2);
            const std::string_view words = page.substr(0, end - value - 2);
            out += own ? std::string(words) : apply(words);
            page.remove_prefix(words.size());
            left -= end;
        }
        take(left);
    }
    return out;
}

}  // namespace simhost::tool
