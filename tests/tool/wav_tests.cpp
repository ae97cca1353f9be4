#include "tool/shared/media/wav.h"

#include <gtest/gtest.h>

namespace simhost::tool {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(Wav, TheHeaderIsExact) {
    const Bytes expected = {
        'R',  'I',  'F',  'F',  0x60, 0x00, 0x00, 0x00,
        'W',  'A',  'V',  'E',                           // 72 + 24 bytes follow the size
        'f',  'm',  't',  ' ',  0x28, 0x00, 0x00, 0x00,  // 40
        0xFE, 0xFF, 0x02, 0x00,                          // extensible, 2 channels
        0x80, 0xBB, 0x00, 0x00, 0x00, 0xDC, 0x05, 0x00,  // 48000 Hz, 384000 bytes a second
        0x08, 0x00, 0x20, 0x00, 0x16, 0x00, 0x20, 0x00,  // block 8, 32 bits, 22 more, 32 valid
        0x03, 0x00, 0x00, 0x00,                          // left and right
        0x03, 0x00, 0x00, 0x00, 0x00, 0x00, 0x10, 0x00,  // IEEE float
        0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71,  //
        'f',  'a',  'c',  't',  0x04, 0x00, 0x00, 0x00,
        0x03, 0x00, 0x00, 0x00,                          // 3 sample frames
        'd',  'a',  't',  'a',  0x18, 0x00, 0x00, 0x00,  // 24 bytes
    };
    EXPECT_EQ(wavHeader(2, 48000, 3, 3), expected);
}

TEST(Wav, WhatDoesNotFit32BitSizesIsRefused) {
    // 2^32 - 1 - 80 bytes of samples are the most.
    EXPECT_TRUE(wavHeader(1, 48000, 0, 1073741803));
    EXPECT_FALSE(wavHeader(1, 48000, 0, 1073741804));
    EXPECT_FALSE(wavHeader(32, 48000, 0, std::uint64_t{1} << 62));
    EXPECT_FALSE(wavHeader(0, 48000, 0, 1));
}

TEST(Wav, LabelsBecomeAMask) {
    EXPECT_EQ(channelMask(std::vector<std::uint32_t>{100, 101}), 0x3u);
    EXPECT_EQ(channelMask(std::vector<std::uint32_t>{100, 101, 102, 103, 104, 105}), 0x3Fu);
    EXPECT_EQ(channelMask(std::vector<std::uint32_t>{100, 101, 102, 103, 109, 110}), 0x60Fu);
    EXPECT_EQ(channelMask(std::vector<std::uint32_t>{107, 108, 106, 111, 112, 114, 113, 115, 117, 116}),
              0x3F9C0u);
}

TEST(Wav, ChannelsWithoutALoudspeakerOrOutOfOrderGiveNoMask) {
    EXPECT_EQ(channelMask(std::vector<std::uint32_t>{100, 0}), 0u);
    EXPECT_EQ(channelMask(std::vector<std::uint32_t>{101, 100}), 0u);
    EXPECT_EQ(channelMask(std::vector<std::uint32_t>{100, 100}), 0u);
    EXPECT_EQ(channelMask(std::vector<std::uint32_t>{100, 9999}), 0u);
    EXPECT_EQ(channelMask({}), 0u);
}

TEST(Wav, LabelsHaveTheHostsNames) {
    EXPECT_STREQ(channelLabelName(103), "LowFrequency");
    EXPECT_STREQ(channelLabelName(137), "Ambisonic_Z");
    EXPECT_STREQ(channelLabelName(0), "Discrete");
    EXPECT_STREQ(channelLabelName(120), "Unknown");
}

}  // namespace
}  // namespace simhost::tool
