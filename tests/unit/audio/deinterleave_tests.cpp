#include "audio/deinterleave.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace orvantis {
namespace {

constexpr std::uint32_t kPoison = 0xC6406400;  // -12313.0f

/// A different word for every sample: quiet and signalling NaNs of both signs, infinities, denormals, large
/// values.
std::uint32_t sampleWord(std::size_t number) {
    const auto low = static_cast<std::uint32_t>(number * 2654435761u);
    switch (number % 5) {
        case 0:
            return 0x7F800001u | (low & 0x003FFFFFu);  // signalling NaN
        case 1:
            return 0xFFC00000u | (low & 0x003FFFFFu);  // negative quiet NaN
        case 2:
            return low & 0x007FFFFFu;  // denormal
        default:
            return low;
    }
}

std::uint32_t wordAt(const float* place) {
    std::uint32_t word;
    std::memcpy(&word, place, sizeof word);
    return word;
}

/// Runs deinterleaveFloat with the source at `misalignment` bytes from an aligned address and without buffers
/// for the channels of which `absent` has the bit set. Compares every word and the words round the buffers.
void expectDeinterleaved(std::uint32_t channels, std::size_t frames, std::size_t misalignment,
                         std::uint32_t absent) {
    std::vector<std::byte> source(misalignment + channels * frames * 4);  // exactly: a read too far is found
    for (std::size_t i = 0; i < channels * frames; ++i) {
        const std::uint32_t word = sampleWord(i);
        std::memcpy(source.data() + misalignment + i * 4, &word, 4);
    }
    std::vector<std::vector<std::uint32_t>> words(channels, std::vector<std::uint32_t>(frames + 2, kPoison));
    std::vector<float*> buffers(channels);
    std::vector<std::vector<float>> floats(channels, std::vector<float>(frames + 2));
    for (std::uint32_t c = 0; c < channels; ++c) {
        std::memcpy(floats[c].data(), words[c].data(), words[c].size() * 4);
        buffers[c] = (absent >> c & 1) != 0 ? nullptr : floats[c].data() + 1;
    }

    deinterleaveFloat(source.data() + misalignment, buffers.data(), channels, frames);

    for (std::uint32_t c = 0; c < channels; ++c) {
        for (std::size_t i = 0; i < frames + 2; ++i) {
            const bool written = buffers[c] != nullptr && i >= 1 && i <= frames;
            const std::uint32_t expected = written ? sampleWord((i - 1) * channels + c) : kPoison;
            ASSERT_EQ(wordAt(&floats[c][i]), expected)
                << "channel " << c << " of " << channels << ", frame " << static_cast<long long>(i) - 1
                << " of " << frames << ", misalignment " << misalignment << ", absent " << absent;
        }
    }
}

TEST(DeinterleaveFloat, MovesEveryBitForEveryChannelCount) {
    for (std::uint32_t channels = 1; channels <= 32; ++channels) {
        for (const unsigned frames : {0u, 1u, 2u, 3u, 4u, 5u, 7u, 8u, 9u, 15u, 16u, 17u, 31u, 33u, 100u}) {
            expectDeinterleaved(channels, frames, 0, 0);
        }
    }
}

// The copy goes through the source in blocks of some kilobytes.
TEST(DeinterleaveFloat, IsExactRoundTheBlockBorders) {
    for (const std::uint32_t channels : {1u, 2u, 3u, 6u, 8u, 32u}) {
        const std::size_t blockFrames = 4096 / (channels * 4) / 4 * 4;
        for (std::size_t frames = 2 * blockFrames - 5; frames <= 2 * blockFrames + 5; ++frames) {
            expectDeinterleaved(channels, frames, 0, 0);
        }
    }
}

TEST(DeinterleaveFloat, TakesASourceAtAnyAddress) {
    for (const std::uint32_t channels : {1u, 2u, 5u, 8u}) {
        for (std::size_t misalignment = 1; misalignment < 16; ++misalignment) {
            expectDeinterleaved(channels, 37, misalignment, 0);
        }
    }
}

TEST(DeinterleaveFloat, LeavesOutChannelsWithoutABuffer) {
    for (std::uint32_t channels = 1; channels <= 8; ++channels) {
        for (std::uint32_t absent = 1; absent < 1u << channels; ++absent) {
            expectDeinterleaved(channels, 21, 0, absent);
        }
    }
}

TEST(DeinterleaveFloat, TouchesNothingWithoutChannelsOrFrames) {
    float sample = -12345.0f;
    float* const buffers[1] = {&sample};
    deinterleaveFloat(nullptr, buffers, 0, 1000);
    EXPECT_EQ(sample, -12345.0f);
    deinterleaveFloat(nullptr, buffers, 1, 0);
    EXPECT_EQ(sample, -12345.0f);
}

}  // namespace
}  // namespace orvantis
