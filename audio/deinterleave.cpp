#include "audio/deinterleave.h"

#include <algorithm>
#include <cstring>

namespace orvantis {

namespace {

// Samples are moved as 32-bit words: on some machines a signalling NaN changes when it passes through a float
// register.
using Word = std::uint32_t;
constexpr std::size_t kWordBytes = sizeof(Word);
static_assert(sizeof(float) == kWordBytes);

/// Any number of channels: one channel after the other.
void copyStrided(const std::byte* source, float* const* channels, std::uint32_t channelCount,
                 std::size_t firstFrame, std::size_t frames) noexcept {
    const std::size_t frameBytes = channelCount * kWordBytes;
    for (std::uint32_t c = 0; c < channelCount; ++c) {
        if (channels[c] == nullptr) continue;
        float* const destination = channels[c];
        const std::byte* sample = source + firstFrame * frameBytes + c * kWordBytes;
        for (std::size_t f = firstFrame; f < frames; ++f, sample += frameBytes) {
            std::memcpy(destination + f, sample, kWordBytes);
        }
    }
}

}  // namespace

void deinterleaveFloat(const std::byte* source, float* const* channels, std::uint32_t channelCount,
                       std::size_t frames) noexcept {
    if (frames == 0) return;
    if (channelCount == 1) {
        if (channels[0] != nullptr) std::memcpy(channels[0], source, frames * kWordBytes);
        return;
    }
    copyStrided(source, channels, channelCount, 0, frames);
}

}  // namespace orvantis
