// What the simulated host knows of its pixel formats: names, memory layout, and what the host is documented
// to answer about each. Read-only tables; any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace simhost {

struct PixelLayout {
    std::uint32_t format;  ///< the host's code
    const char* name;      ///< the host's identifier
    std::int32_t
        pixelsPerGroup;          ///< pixels that share one group of bytes; 0 = frames of it cannot be created
    std::int32_t bytesPerGroup;  ///<
    bool compressed;             ///< answer of FormatIsCompressed
    bool alpha;                  ///< answer of FormatHasAlpha
    bool topLeft;                ///< answer of FormatIsOriginTopLeft of the real host
};

/// All formats of the host's enumeration but PrPixelFormat_Any.
std::span<const PixelLayout> pixelLayouts() noexcept;

/// The row of a format, or null.
const PixelLayout* findPixelLayout(std::uint32_t format) noexcept;

/// The format with that identifier (with or without "PrPixelFormat_") or four-character code, case being
/// significant.
std::optional<std::uint32_t> pixelFormatFromText(std::string_view text);

/// The host's identifier, or "????".
const char* pixelFormatName(std::uint32_t format) noexcept;

/// Bytes that hold the pixels of one row, without padding: the last group counts whole. `layout` must be one
/// that frames can be created of, `width` 0 or more.
std::int64_t minimalRowBytes(const PixelLayout& layout, std::int32_t width) noexcept;

}  // namespace simhost
