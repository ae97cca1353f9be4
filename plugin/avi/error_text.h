// The text that collects the problems of one parse: bounded, and adding to it never fails.
#pragma once

#include <cstddef>
#include <exception>
#include <string>
#include <string_view>

namespace orvantis {

inline constexpr std::size_t kMaxErrorText = 16 * 1024 * 1024;

/// Whether `text` has room for `bytes` more.
inline bool hasRoomFor(const std::string& text, std::size_t bytes) noexcept {
    // not covered when false: nobody makes a text longer than this allows
    return text.size() <= kMaxErrorText && bytes <= kMaxErrorText - text.size();
}

/// Appends `line`, or nothing.
inline void appendBounded(std::string& text, std::string_view line) noexcept {
    if (!hasRoomFor(text, line.size())) {
        return;
    }
    try {
        text.append(line);
    } catch (const std::exception&) {
        return;  // out of memory
    }
}

}  // namespace orvantis
