#include "audio/wave_format.h"

#include <gtest/gtest.h>

#include <cstring>
#include <numeric>
#include <vector>

#include "wave_bytes.h"

namespace orvantis {
namespace {

using namespace audio_test;

std::vector<std::uint8_t> countingBytes(std::size_t size) {
    std::vector<std::uint8_t> bytes(size);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
    return bytes;
}

TEST(WaveFormat, FieldsLieWhereTheFormatHasThem) {
    const WaveFormatExtensible format = waveFormatFromBytes(countingBytes(40));
    EXPECT_EQ(+format.wFormatTag, 0x0201);
    EXPECT_EQ(+format.nChannels, 0x0403);
    EXPECT_EQ(+format.nSamplesPerSec, 0x08070605u);
    EXPECT_EQ(+format.nAvgBytesPerSec, 0x0C0B0A09u);
    EXPECT_EQ(+format.nBlockAlign, 0x0E0D);
    EXPECT_EQ(+format.wBitsPerSample, 0x100F);
    EXPECT_EQ(+format.cbSize, 0x1211);
    EXPECT_EQ(+format.wValidBitsPerSample, 0x1413);
    EXPECT_EQ(+format.dwChannelMask, 0x18171615u);
    EXPECT_EQ(guidToString(format.SubFormat), "1c1b1a19-1e1d-201f-2122-232425262728");
}

TEST(WaveFormat, EveryShorterFormIsFilledUpWithZeros) {
    for (std::size_t size = 0; size <= 40; ++size) {
        const std::vector<std::uint8_t> bytes = countingBytes(size);
        const WaveFormatExtensible format = waveFormatFromBytes(bytes);
        std::vector<std::uint8_t> expected = bytes;
        expected.resize(40);
        EXPECT_EQ(std::memcmp(&format, expected.data(), 40), 0) << size;
    }
}

TEST(WaveFormat, BytesBehindTheFortiethAreIgnored) {
    const WaveFormatExtensible format = waveFormatFromBytes(countingBytes(200));
    EXPECT_EQ(std::memcmp(&format, countingBytes(40).data(), 40), 0);
}

TEST(WaveGuid, OfAPlainFormatIsMadeFromTheTag) {
    WaveFormatExtensible format{};
    format.wFormatTag = 0x0055;
    format.SubFormat.data1 = 7;
    EXPECT_EQ(guidToString(sampleFormatGuid(format)), "00000055-0000-0010-8000-00aa00389b71");
}

TEST(WaveGuid, OfAnExtensibleFormatIsItsSubFormat) {
    const WaveFormatExtensible format =
        waveFormatFromBytes(waveBytes({.tag = kTagExtensible, .subFormat = 3}));
    EXPECT_EQ(guidToString(sampleFormatGuid(format)), "00000003-0000-0010-8000-00aa00389b71");
}

TEST(WaveGuid, TextIsLowerCaseWithLeadingZeros) {
    const WaveGuid guid = {0x00ABCDEF, 0x00FE, 0x0009, {0x00, 0x01, 0x0A, 0xB0, 0xFF, 0x10, 0x02, 0x03}};
    EXPECT_EQ(guidToString(guid), "00abcdef-00fe-0009-0001-0ab0ff100203");
}

TEST(WaveGuid, WithEveryFormatTagIsATagGuid) {
    for (const std::uint32_t tag : {0u, 1u, 3u, 0x55u, 0xFFFFu, 0xFFFFFFFFu}) {
        EXPECT_TRUE(isFormatTagGuid(guidFromFormatTag(tag))) << tag;
    }
}

TEST(WaveGuid, WithAnyOtherByteChangedIsNoTagGuid) {
    for (std::size_t i = 4; i < 16; ++i) {
        WaveGuid guid = guidFromFormatTag(1);
        std::uint8_t bytes[16];
        std::memcpy(bytes, &guid, 16);
        bytes[i] ^= 0x01;
        std::memcpy(&guid, bytes, 16);
        EXPECT_FALSE(isFormatTagGuid(guid)) << i;
    }
}

}  // namespace
}  // namespace orvantis
