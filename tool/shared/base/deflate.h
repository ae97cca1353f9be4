// Compression as PNG and zip files have it, and their check sum. Pure functions; any thread.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace simhost::tool {

/// A zlib stream (RFC 1950). Throws std::runtime_error for more bytes than a gibibyte, and without memory.
std::vector<std::uint8_t> zlibStream(std::span<const std::uint8_t> bytes);
std::uint32_t crc32(std::span<const std::uint8_t> bytes) noexcept;

}  // namespace simhost::tool
