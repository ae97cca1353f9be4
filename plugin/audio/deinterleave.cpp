#include "audio/deinterleave.h"

#include <algorithm>
#include <cstring>

#include "audio/channel_layout.h"

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#define ORVANTIS_SSE2 1
#endif

namespace orvantis {

namespace {

// Samples are moved as 32-bit words: on some machines a signalling NaN changes when it passes through a float
// register.
constexpr std::size_t kWordBytes = sizeof(std::uint32_t);
static_assert(sizeof(float) == kWordBytes);

/// Frames `first` to `end` - 1 of one channel, whose words lie `frameBytes` apart from `source` on.
void copyChannel(const std::byte* source, std::size_t frameBytes, float* channel, std::size_t first,
                 std::size_t end) {
    if (channel == nullptr) {
        return;
    }
    for (std::size_t f = first; f < end; ++f) {
        std::memcpy(channel + f, source + f * frameBytes, kWordBytes);
    }
}

#if defined(ORVANTIS_SSE2)

__m128i load4(const std::byte* words) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(words));
}
__m128i load2(const std::byte* words) {
    return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(words));
}
void store4(float* words, __m128i value) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(words), value);
}

/// Four neighbouring channels: blocks of four frames are transposed. Returns the first frame that is left.
std::size_t copyFourChannels(const std::byte* source, std::size_t frameBytes, float* const* channels,
                             std::size_t first, std::size_t end) {
    float* const a = channels[0];
    float* const b = channels[1];
    float* const c = channels[2];
    float* const d = channels[3];
    std::size_t f = first;
    for (; f + 4 <= end; f += 4) {
        const std::byte* const frame = source + f * frameBytes;
        const __m128i f0 = load4(frame);
        const __m128i f1 = load4(frame + frameBytes);
        const __m128i f2 = load4(frame + 2 * frameBytes);
        const __m128i f3 = load4(frame + 3 * frameBytes);
        const __m128i ab01 = _mm_unpacklo_epi32(f0, f1);
        const __m128i cd01 = _mm_unpackhi_epi32(f0, f1);
        const __m128i ab23 = _mm_unpacklo_epi32(f2, f3);
        const __m128i cd23 = _mm_unpackhi_epi32(f2, f3);
        store4(a + f, _mm_unpacklo_epi64(ab01, ab23));
        store4(b + f, _mm_unpackhi_epi64(ab01, ab23));
        store4(c + f, _mm_unpacklo_epi64(cd01, cd23));
        store4(d + f, _mm_unpackhi_epi64(cd01, cd23));
    }
    return f;
}

/// Two of more channels, in the same way.
std::size_t copyTwoChannels(const std::byte* source, std::size_t frameBytes, float* const* channels,
                            std::size_t first, std::size_t end) {
    float* const a = channels[0];
    float* const b = channels[1];
    std::size_t f = first;
    for (; f + 4 <= end; f += 4) {
        const std::byte* const frame = source + f * frameBytes;
        const __m128i ab01 = _mm_unpacklo_epi32(load2(frame), load2(frame + frameBytes));
        const __m128i ab23 = _mm_unpacklo_epi32(load2(frame + 2 * frameBytes), load2(frame + 3 * frameBytes));
        store4(a + f, _mm_unpacklo_epi64(ab01, ab23));
        store4(b + f, _mm_unpackhi_epi64(ab01, ab23));
    }
    return f;
}

/// Stereo: the frames lie side by side, so that one load holds two of them.
std::size_t copyStereo(const std::byte* source, float* const* channels, std::size_t first, std::size_t end) {
    float* const left = channels[0];
    float* const right = channels[1];
    std::size_t f = first;
    for (; f + 4 <= end; f += 4) {
        const std::byte* const frame = source + f * 2 * kWordBytes;
        const __m128i lr01 = _mm_shuffle_epi32(load4(frame), _MM_SHUFFLE(3, 1, 2, 0));
        const __m128i lr23 = _mm_shuffle_epi32(load4(frame + 4 * kWordBytes), _MM_SHUFFLE(3, 1, 2, 0));
        store4(left + f, _mm_unpacklo_epi64(lr01, lr23));
        store4(right + f, _mm_unpackhi_epi64(lr01, lr23));
    }
    return f;
}

/// As many of the next channels as can be copied together: 4, 2 or 1. Those without a buffer are left out one
/// by one.
std::uint32_t groupSize(float* const* channels, std::uint32_t remaining) {
    for (const std::uint32_t size : {4u, 2u}) {
        if (remaining >= size && std::find(channels, channels + size, nullptr) == channels + size) {
            return size;
        }
    }
    return 1;
}

#endif

/// Frames `first` to `end` - 1 of all channels.
void copyFrames(const std::byte* source, float* const* channels, std::uint32_t channelCount,
                std::size_t first, std::size_t end) {
    const std::size_t frameBytes = channelCount * kWordBytes;
    std::uint32_t c = 0;
#if defined(ORVANTIS_SSE2)
    while (c < channelCount) {
        const std::uint32_t group = groupSize(channels + c, channelCount - c);
        const std::byte* const words = source + c * kWordBytes;
        std::size_t rest = first;
        if (group == 4) {
            rest = copyFourChannels(words, frameBytes, channels + c, first, end);
        }
        if (group == 2) {
            rest = channelCount == 2 ? copyStereo(words, channels, first, end)
                                     : copyTwoChannels(words, frameBytes, channels + c, first, end);
        }
        for (const std::uint32_t groupEnd = c + group; c < groupEnd; ++c) {
            copyChannel(source + c * kWordBytes, frameBytes, channels[c], rest, end);
        }
    }
#endif
    // not covered when true: on processors with vectors the groups have taken all channels
    for (; c < channelCount; ++c) {
        copyChannel(source + c * kWordBytes, frameBytes, channels[c], first, end);
    }
}

}  // namespace

void deinterleaveFloat(const std::byte* source, float* const* channels, std::uint32_t channelCount,
                       std::size_t frames) noexcept {
    if (frames == 0 || channelCount == 0) {
        return;
    }
    if (channelCount == 1) {
        if (channels[0] != nullptr) {
            std::memcpy(channels[0], source, frames * kWordBytes);
        }
        return;
    }
    // The source is read once for each group of channels: in blocks that stay in the first-level cache
    // meanwhile, together with the lines of all channels that are being written.
    constexpr std::size_t kBlockBytes = 4096;
    static_assert(kBlockBytes / (kMaxAudioChannels * kWordBytes) >= 4);
    const std::size_t blockFrames = kBlockBytes / (channelCount * kWordBytes) / 4 * 4;
    for (std::size_t first = 0; first < frames; first += blockFrames) {
        copyFrames(source, channels, channelCount, first, std::min(first + blockFrames, frames));
    }
}

}  // namespace orvantis
