// The bytes of a stretch of sound that are hashed: samples put back from the host's floats into the kind in
// which they are stored, interleaved, as ffmpeg's PCM coders of the same name write them. The host hears 24
// bits of a 32-bit integer; those are hashed as the floats that it hears. Pure functions; any thread.
#pragma once

#include <cstdint>
#include <vector>

namespace simhost::tool {

enum class SampleKind { kU8, kS16, kS24, kF32 };

/// Of the host's code for a sample type.
SampleKind sampleKind(std::uint32_t sampleType) noexcept;
/// "pcm_s16le"
const char* sampleKindName(SampleKind kind) noexcept;
std::uint32_t sampleBytes(SampleKind kind) noexcept;

/// Sample frames `first` to `first + count` - 1 of the channels, in the place of what `out` held.
void layOut(const std::vector<std::vector<float>>& channels, std::size_t first, std::size_t count,
            SampleKind kind, std::vector<std::uint8_t>& out);

}  // namespace simhost::tool
