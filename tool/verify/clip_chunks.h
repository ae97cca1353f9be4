// What the index of a clip says of its frames and blocks of sound before anything is decoded, read by the
// plug-in's own reader: the numbers are those by which the host asks. Main thread only.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace simhost::tool {

enum class ChunkState : std::uint8_t {
    kThere,
    kRepeated,  ///< an empty chunk: the frame before is shown again
    kMissing,   ///< not wholly inside the file
};

/// A stretch of sound with one hash.
struct SoundBlock {
    std::uint64_t first = 0;  ///< sample frame
    std::uint32_t count = 0;
    ChunkState state = ChunkState::kThere;
};

/// A sound track in the order of the file, usable or not.
struct SoundChunks {
    std::vector<SoundBlock>
        blocks;  ///< as ffmpeg's reader divides it: chunk by chunk, 1024 sample frames at most
    std::uint64_t sampleFrames = 0;  ///< that the index leads to
    std::uint64_t declared = 0;      ///< of the header
};

struct ClipChunks {
    std::vector<ChunkState> pictures;
    std::uint32_t declaredPictures = 0;
    std::uint32_t rate = 0;   ///< of the pictures, as the header has it: rate / scale a second
    std::uint32_t scale = 0;  ///<
    std::vector<SoundChunks> sounds;
};

/// Nothing when the file cannot be read as AVI. What it takes goes with the number of index entries and the
/// file's size.
std::optional<ClipChunks> readClipChunks(const std::string& pathUtf8);

}  // namespace simhost::tool
