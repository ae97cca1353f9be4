#include "tool/shared/base/deflate.h"

#include <array>
#include <cstdlib>
#include <limits>
#include <memory>
#include <stdexcept>

// Only the deflate compressor is used.
#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#define STBI_WRITE_NO_STDIO
#include <stb/stb_image_write.h>

namespace simhost::tool {
namespace {

struct Free {
    void operator()(unsigned char* memory) const noexcept { std::free(memory); }
};

}  // namespace

std::uint32_t crc32(std::span<const std::uint8_t> bytes) noexcept {
    static const std::array<std::uint32_t, 256> kTable = [] {
        std::array<std::uint32_t, 256> table{};
        for (std::uint32_t i = 0; i < table.size(); ++i) {
            std::uint32_t value = i;
            for (int bit = 0; bit < 8; ++bit) {
                value = (value >> 1) ^ ((value & 1) != 0 ? 0xEDB88320u : 0u);
            }
            table[i] = value;
        }
        return table;
    }();
    std::uint32_t crc = 0xFFFFFFFFu;
    for (const std::uint8_t byte : bytes) {
        crc = (crc >> 8) ^ kTable[(crc ^ byte) & 0xFF];
    }
    return ~crc;
}

std::vector<std::uint8_t> zlibStream(std::span<const std::uint8_t> bytes) {
    if (bytes.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()) / 2) {
        throw std::runtime_error("there is too much to compress");
    }
    constexpr int kCompressionLevel = 5;
    int compressedBytes = 0;
    // The library takes no const pointer and changes nothing.
    const std::unique_ptr<unsigned char, Free> compressed(
        stbi_zlib_compress(const_cast<unsigned char*>(bytes.data()), static_cast<int>(bytes.size()),
                           &compressedBytes, kCompressionLevel));
    if (!compressed) {
        throw std::runtime_error("no memory to compress");
    }
    return {compressed.get(), compressed.get() + compressedBytes};
}

}  // namespace simhost::tool
