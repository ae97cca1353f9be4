#include "simhost/audio_convert.h"

#include <bit>
#include <cstddef>

namespace simhost {

void uninterleaveAndConvert(unsigned bytesPerSample, const unsigned char* source, float** destination,
                            std::uint32_t channels, std::uint32_t frames) noexcept {
    for (std::size_t frame = 0; frame < frames; ++frame) {
        for (std::size_t channel = 0; channel < channels; ++channel) {
            const unsigned char* sample = source + (frame * channels + channel) * bytesPerSample;
            // The sample in the upper bytes of the word: its sign is in place, and the scale is 2^31 for
            // every width.
            std::uint32_t word = 0;
            for (unsigned byte = 0; byte < bytesPerSample; ++byte) {
                word |= std::uint32_t{sample[byte]} << (8 * (4 - bytesPerSample + byte));
            }
            destination[channel][frame] =
                static_cast<float>(std::bit_cast<std::int32_t>(word)) / 2147483648.0F;
        }
    }
}

}  // namespace simhost
