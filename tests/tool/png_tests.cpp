#include "tool/shared/pictures/png.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#define STB_IMAGE_IMPLEMENTATION
#define STBI_NO_THREAD_LOCALS  // one thread; and clang for Windows loses those that are static
#define STB_IMAGE_STATIC
#define STBI_ONLY_PNG
#define STBI_NO_STDIO
#include <stb/stb_image.h>

namespace simhost::tool {
namespace {

Picture randomPicture(int channels, int bits, std::int32_t width, std::int32_t height, bool smooth) {
    std::mt19937 random(static_cast<unsigned>(channels * 100 + bits));
    Picture out;
    out.width = width;
    out.height = height;
    out.channels = channels;
    out.bits = bits;
    const unsigned most = bits == 16 ? 65535 : 255;
    for (std::int32_t i = 0; i < width * height * channels; ++i) {
        const unsigned value = smooth ? static_cast<unsigned>(i) * 3 : static_cast<unsigned>(random());
        out.samples.push_back(static_cast<std::uint16_t>(value % (most + 1)));
    }
    return out;
}

// Decodes with a decoder that is not ours, which checks neither CRC; that is done below.
std::vector<std::uint16_t> decode(const std::vector<std::uint8_t>& png, int& width, int& height,
                                  int& channels, bool deep) {
    const auto size = static_cast<int>(png.size());
    std::vector<std::uint16_t> out;
    EXPECT_EQ(stbi_is_16_bit_from_memory(png.data(), size) != 0, deep);
    if (deep) {
        stbi_us* pixels = stbi_load_16_from_memory(png.data(), size, &width, &height, &channels, 0);
        EXPECT_NE(pixels, nullptr);
        out.assign(pixels, pixels + std::ptrdiff_t{width} * height * channels);
        stbi_image_free(pixels);
    } else {
        stbi_uc* pixels = stbi_load_from_memory(png.data(), size, &width, &height, &channels, 0);
        EXPECT_NE(pixels, nullptr);
        out.assign(pixels, pixels + std::ptrdiff_t{width} * height * channels);
        stbi_image_free(pixels);
    }
    return out;
}

TEST(Png, EveryKindOfPictureComesBackAsItWas) {
    for (const int channels : {3, 4}) {
        for (const int bits : {8, 16}) {
            for (const bool smooth : {false, true}) {
                const Picture picture = randomPicture(channels, bits, 17, 9, smooth);
                int width = 0;
                int height = 0;
                int decodedChannels = 0;
                EXPECT_EQ(decode(encodePng(picture), width, height, decodedChannels, bits == 16),
                          picture.samples)
                    << channels << " channels, " << bits << " bits";
                EXPECT_EQ(width, 17);
                EXPECT_EQ(height, 9);
                EXPECT_EQ(decodedChannels, channels);
            }
        }
    }
}

// CRC-32 bit by bit, as the format's document defines it.
std::uint32_t slowCrc(const std::uint8_t* bytes, std::size_t size) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (std::size_t i = 0; i < size; ++i) {
        crc ^= bytes[i];
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320 : 0);
        }
    }
    return ~crc;
}

TEST(Png, ChunksAreWholeAndTheirChecksumsHold) {
    const auto png = encodePng(randomPicture(4, 16, 5, 5, false));
    const auto word = [&png](std::size_t at) {
        return std::uint32_t{png[at]} << 24 | std::uint32_t{png[at + 1]} << 16 |
               std::uint32_t{png[at + 2]} << 8 | png[at + 3];
    };
    std::string types;
    std::size_t at = 8;
    while (at + 12 <= png.size()) {
        const std::size_t size = word(at);
        types += std::string(png.begin() + static_cast<std::ptrdiff_t>(at + 4),
                             png.begin() + static_cast<std::ptrdiff_t>(at + 8)) +
                 " ";
        EXPECT_EQ(word(at + 8 + size), slowCrc(png.data() + at + 4, size + 4));
        at += size + 12;
    }
    EXPECT_EQ(at, png.size());
    EXPECT_EQ(types, "IHDR IDAT IEND ");
    EXPECT_EQ(slowCrc(reinterpret_cast<const std::uint8_t*>("IEND"), 4), 0xAE426082u)
        << "the known value of every file";
}

TEST(Png, SmoothPicturesShrink) {
    const Picture picture = randomPicture(3, 16, 200, 100, true);
    EXPECT_LT(encodePng(picture).size(), picture.samples.size() * 2 / 4);
}

}  // namespace
}  // namespace simhost::tool
