// What the simulated host knows of its pixel formats: the host's own table, searched by code and by text.
// Read-only; any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "host/pixel_formats.h"

namespace simhost {

using PixelLayout = host::PixelFormat;
using host::pixelFormatName;

/// All formats that this host has; PrPixelFormat_Any is none, and those of later hosts it does not know.
std::span<const PixelLayout> pixelLayouts() noexcept;

/// The row of a format, or null.
const PixelLayout* findPixelLayout(std::uint32_t format) noexcept;

/// The format with that identifier (with or without "PrPixelFormat_") or four-character code, case being
/// significant.
std::optional<std::uint32_t> pixelFormatFromText(std::string_view text);

/// Bytes that hold the pixels of one row, without padding: the last group counts whole. `layout` must be one
/// that frames can be created of, `width` 0 or more.
std::int64_t minimalRowBytes(const PixelLayout& layout, std::int32_t width) noexcept;

}  // namespace simhost
