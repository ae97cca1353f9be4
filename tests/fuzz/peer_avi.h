// What libavformat makes of an AVI file: streams and index, without a frame being decoded.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace fuzz {

struct PeerEntry {
    std::int64_t frame;   ///< its number in the stream, as a timestamp
    std::int64_t header;  ///< file position of the chunk's header
    std::int64_t size;
};

struct PeerStream {
    enum class Kind { kVideo, kAudio, kOther };
    Kind kind = Kind::kOther;
    std::uint32_t tag = 0;  ///< compression, or format tag
    int width = 0;
    int height = 0;
    int channels = 0;
    int samplesPerSecond = 0;
    int rate = 0;  ///< time base, reduced: rate / scale
    int scale = 0;
    std::vector<PeerEntry> entries;
};

/// Nothing when it is refused.
std::optional<std::vector<PeerStream>> readAsPeer(std::span<const std::uint8_t> file);

}  // namespace fuzz
