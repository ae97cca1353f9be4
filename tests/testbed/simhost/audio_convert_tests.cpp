#include "simhost/audio_convert.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace simhost {
namespace {

std::vector<float> convertMono(unsigned bytes, const std::vector<unsigned char>& source) {
    std::vector<float> out(source.size() / bytes);
    float* destination[] = {out.data()};
    uninterleaveAndConvert(bytes, source.data(), destination, 1, static_cast<std::uint32_t>(out.size()));
    return out;
}

TEST(AudioConvert, EightBitsAreSignedIn128ths) {
    EXPECT_EQ(convertMono(1, {0x80, 0x00, 0x7F, 0x40, 0xFF}),
              (std::vector<float>{-1.0F, 0.0F, 127.0F / 128.0F, 0.5F, -1.0F / 128.0F}));
}

TEST(AudioConvert, SixteenBitsAreIn32768ths) {
    // -32768, 32767, 1, -1
    EXPECT_EQ(convertMono(2, {0x00, 0x80, 0xFF, 0x7F, 0x01, 0x00, 0xFF, 0xFF}),
              (std::vector<float>{-1.0F, 32767.0F / 32768.0F, 1.0F / 32768.0F, -1.0F / 32768.0F}));
}

TEST(AudioConvert, TwentyFourBitsAreIn8388608ths) {
    // -8388608, 8388607, 1, -1
    EXPECT_EQ(convertMono(3, {0x00, 0x00, 0x80, 0xFF, 0xFF, 0x7F, 0x01, 0x00, 0x00, 0xFF, 0xFF, 0xFF}),
              (std::vector<float>{-1.0F, 8388607.0F / 8388608.0F, 1.0F / 8388608.0F, -1.0F / 8388608.0F}));
}

TEST(AudioConvert, ThirtyTwoBitsAreIn2147483648ths) {
    // -2147483648, 1073741824, 2147483647 (which rounds to full scale), 1
    EXPECT_EQ(convertMono(4, {0x00, 0x00, 0x00, 0x80, 0x00, 0x00, 0x00, 0x40,  //
                              0xFF, 0xFF, 0xFF, 0x7F, 0x01, 0x00, 0x00, 0x00}),
              (std::vector<float>{-1.0F, 0.5F, 1.0F, 1.0F / 2147483648.0F}));
}

TEST(AudioConvert, ChannelsAreTakenApart) {
    const std::vector<unsigned char> source = {0, 10, 20, 30, 40, 50};
    std::array<float, 2> a{};
    std::array<float, 2> b{};
    std::array<float, 2> c{};
    float* destination[] = {a.data(), b.data(), c.data()};
    uninterleaveAndConvert(1, source.data(), destination, 3, 2);
    EXPECT_EQ(a, (std::array<float, 2>{0.0F, 30.0F / 128.0F}));
    EXPECT_EQ(b, (std::array<float, 2>{10.0F / 128.0F, 40.0F / 128.0F}));
    EXPECT_EQ(c, (std::array<float, 2>{20.0F / 128.0F, 50.0F / 128.0F}));
}

}  // namespace
}  // namespace simhost
