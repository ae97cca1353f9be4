// Random ranges against a model that knows nothing of chunks: the stream as one run of bytes.

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "import_fixture.h"

namespace orvantis {
namespace {

using namespace audio_test;

std::vector<std::uint32_t> randomChunks(std::mt19937& random) {
    std::vector<std::uint32_t> sizes(60);
    for (std::uint32_t& size : sizes) {
        const std::uint32_t kind = random() % 10;
        size = kind < 2 ? 0 : kind < 5 ? random() % 16 : random() % 700;
    }
    return sizes;
}

/// The bits that the host must get for one sample, from the stream's bytes with silence behind them.
std::uint32_t modelSample(const std::vector<std::uint8_t>& data, std::uint64_t position, unsigned bits,
                          bool isFloat) {
    std::uint8_t bytes[4] = {};
    for (unsigned i = 0; i < bits / 8; ++i) {
        if (position + i < data.size()) {
            bytes[i] = data[position + i];
        }
        if (bits == 8) {
            bytes[i] = static_cast<std::uint8_t>(bytes[i] + 128);
        }
    }
    const float converted = isFloat ? 0.0f : convertedSample(bytes, bits);
    std::uint32_t result;
    std::memcpy(&result, isFloat ? static_cast<const void*>(bytes) : &converted, sizeof result);
    return result;
}

void importRandomRanges(const WaveBytes& wave, unsigned seed) {
    std::mt19937 random(seed);
    ImportFixture fixture;
    fixture.audioHost.keepsConverterCalls = false;
    fixture.layOut(randomChunks(random));
    ASSERT_EQ(fixture.analyse(wave), 0);
    std::vector<std::uint8_t> data(fixture.stream.totalBytes());
    for (std::size_t i = 0; i < data.size(); ++i) {
        data[i] = streamByte(i);
    }

    const std::uint32_t frameBytes = wave.channels * (wave.bits / 8u);
    const std::uint32_t streamFrames = static_cast<std::uint32_t>(data.size() / frameBytes);
    std::uint64_t next = 0;
    for (int round = 0; round < 2000; ++round) {
        const bool sequential = random() % 3 == 0;
        const std::int64_t position = sequential ? -1 - static_cast<std::int64_t>(random() % 5)
                                                 : static_cast<std::int64_t>(random() % (streamFrames + 20));
        const std::uint32_t size = random() % (random() % 8 == 0 ? streamFrames + 50 : 40);
        const std::uint64_t startFrame = sequential ? next : static_cast<std::uint64_t>(position);
        next = startFrame + size;

        HostBuffers buffers(wave.channels, size);
        ASSERT_EQ(fixture.importFrames(position, size, buffers), 0);
        for (std::uint32_t f = 0; f < size; ++f) {
            for (std::uint32_t c = 0; c < wave.channels; ++c) {
                const std::uint64_t at = (startFrame + f) * frameBytes + c * (wave.bits / 8u);
                const std::uint32_t expected = modelSample(data, at, wave.bits, wave.tag == kTagFloat);
                ASSERT_EQ(buffers.bitsAt(c, f), expected)
                    << "seed " << seed << ", round " << round << ": position " << position << ", size "
                    << size << ", start " << startFrame << ", channel " << c << ", frame " << f;
            }
        }
        ASSERT_TRUE(buffers.guardsHold()) << "seed " << seed << ", round " << round;
    }
}

TEST(AudioImportRandomRanges, Of8BitMono) {
    importRandomRanges({.channels = 1, .bits = 8}, 101);
}
TEST(AudioImportRandomRanges, Of16BitStereo) {
    importRandomRanges({.channels = 2, .bits = 16}, 102);
}
TEST(AudioImportRandomRanges, Of24BitThreeChannels) {
    importRandomRanges({.channels = 3, .bits = 24}, 103);
}
TEST(AudioImportRandomRanges, Of32BitSurround) {
    importRandomRanges({.channels = 6, .bits = 32}, 104);
}
TEST(AudioImportRandomRanges, OfFloatEightChannels) {
    importRandomRanges({.tag = kTagFloat, .channels = 8, .bits = 32}, 105);
}

}  // namespace
}  // namespace orvantis
