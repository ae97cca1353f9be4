// Reading a part of one audio chunk, as frame_chunk.h reads a whole video chunk: what happened comes back as
// a value, and the caller says what the host and the log get to know of it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "avi/index_entry.h"
#include "fileio/file.h"

namespace orvantis {

/// Bytes of one chunk, by their place in the file.
struct AudioChunkPart {
    /// An index may name any position; one beyond the signed range turns negative, which the file refuses.
    std::int64_t filePosition;
    std::uint64_t bytes;
};

/// The part of `chunk` that begins `offset` bytes into it (at most its size), `wanted` bytes at most.
AudioChunkPart audioChunkPart(const IndexEntry& chunk, std::uint64_t offset, std::uint64_t wanted) noexcept;

/// What became of a request for a part of a chunk.
struct [[nodiscard]] AudioChunkRead {
    enum class Outcome {
        kRead,         ///< all bytes are there
        kSeekRefused,  ///< the file stands where it stood; nothing was read
        kCutShort,     ///< the file ended, or reading failed, behind the first `bytes` ones
    };

    Outcome outcome;
    std::uint64_t bytes;  ///< how many came
};

/// Reads `part` to `dest`, which has room for it, by one seek and one read. The caller serialises calls on
/// one file.
AudioChunkRead readAudioChunk(fileio::File& file, const AudioChunkPart& part, std::byte* dest);

}  // namespace orvantis
