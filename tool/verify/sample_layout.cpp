#include "tool/verify/sample_layout.h"

#include <bit>
#include <cmath>

#include "host/audio_codes.h"

namespace simhost::tool {

SampleKind sampleKind(std::uint32_t sampleType) noexcept {
    switch (sampleType) {
        case host::kPrAudioSampleType_8BitInt:
            return SampleKind::kU8;
        case host::kPrAudioSampleType_16BitInt:
            return SampleKind::kS16;
        case host::kPrAudioSampleType_24BitInt:
            return SampleKind::kS24;
        default:
            return SampleKind::kF32;
    }
}

const char* sampleKindName(SampleKind kind) noexcept {
    constexpr const char* kNames[] = {"pcm_u8", "pcm_s16le", "pcm_s24le", "pcm_f32le"};
    return kNames[static_cast<int>(kind)];
}

std::uint32_t sampleBytes(SampleKind kind) noexcept {
    return static_cast<std::uint32_t>(kind) + 1;
}

void layOut(const std::vector<std::vector<float>>& channels, std::size_t first, std::size_t count,
            SampleKind kind, std::vector<std::uint8_t>& out) {
    const std::size_t bytes = sampleBytes(kind);
    out.resize(count * channels.size() * bytes);
    const float fullScale = kind == SampleKind::kU8    ? 128.0F
                            : kind == SampleKind::kS16 ? 32768.0F
                                                       : 8388608.0F;
    std::uint8_t* to = out.data();
    for (std::size_t i = first; i < first + count; ++i) {
        for (const std::vector<float>& channel : channels) {
            std::uint32_t word = std::bit_cast<std::uint32_t>(channel[i]);
            if (kind != SampleKind::kF32) {
                // An integer of at most 24 bits goes through a float and back unharmed.
                word = static_cast<std::uint32_t>(std::lrint(channel[i] * fullScale));
                word ^= kind == SampleKind::kU8 ? 0x80U : 0U;
            }
            for (std::size_t byte = 0; byte < bytes; ++byte) {
                *to++ = static_cast<std::uint8_t>(word >> (8 * byte));
            }
        }
    }
}

}  // namespace simhost::tool
