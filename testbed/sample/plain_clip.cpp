#include "plain_clip.h"

#include <cstring>

namespace sample {

bool readHeader(const InputFile& file, PlainHeader& header) {
    unsigned char bytes[PlainHeader::kBytes];
    if (!file.readAt(0, bytes, sizeof(bytes)) || std::memcmp(bytes, "PLAINCLP", 8) != 0) {
        return false;
    }
    std::uint32_t* const fields[] = {&header.width,      &header.height,      &header.frames,
                                     &header.rate,       &header.duration,    &header.channels,
                                     &header.sampleRate, &header.sampleFrames};
    for (std::size_t i = 0; i < 8; ++i) {
        const unsigned char* const at = bytes + 8 + 4 * i;
        *fields[i] =
            at[0] | std::uint32_t{at[1]} << 8 | std::uint32_t{at[2]} << 16 | std::uint32_t{at[3]} << 24;
    }
    // The host's numbers are signed, and it multiplies frames by their duration.
    constexpr std::uint32_t kMost = 0x7FFF'FFFF;
    const PlainHeader& h = header;
    return h.width >= 1 && h.width <= 16384 && h.height >= 1 && h.height <= 16384 && h.rate >= 1 &&
           h.rate <= 1000000 && h.duration >= 1 && h.frames >= 1 && h.frames <= kMost / h.duration &&
           h.channels <= 2 && h.sampleRate <= kMost && (h.channels == 0 || h.sampleRate >= 1) &&
           h.sampleFrames <= kMost && file.size() >= h.soundPosition(h.sampleFrames);
}

}  // namespace sample
