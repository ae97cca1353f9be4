// Reading the compressed bytes of one video frame. What happened comes back as a value: what the host is told
// of it, and what the log, is the caller's business.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "fileio/file.h"
#include "fileio/read_buffer.h"

namespace orvantis {

class AviStream;

/// Where a frame's compressed bytes are read to. Reused from frame to frame.
struct FrameChunk {
    fileio::ReadBuffer buffer;
    std::size_t bytes = 0;  ///< how many of them belong to the frame read last
};

/// What became of a request for one frame's chunk.
struct [[nodiscard]] FrameChunkRead {
    enum class Outcome {
        kRead,          ///< the bytes are there
        kNoneWithData,  ///< neither this chunk nor one that could repeat in its place has data
        kFailed,        ///< seek or read failed
    };

    Outcome outcome = Outcome::kRead;
    /// The frame whose chunk was taken in place of an empty one, whether or not it could be read.
    std::optional<std::uint64_t> substitute{};
    std::string failure{};  ///< of failed: what the file said
};

/// Reads the chunk of frame `frameNumber` of `stream` into `chunk`, by one seek and one read; an empty chunk
/// is served from its neighbour. `frameCount` is the video's frame count. A failed read leaves chunk.bytes as
/// it was. Throws std::out_of_range when frameNumber is not below the list's length. Allocates nothing unless
/// the buffer has to grow or the read fails. The caller serialises calls on one file.
FrameChunkRead readFrameChunk(fileio::File& file, const AviStream& stream, std::uint64_t frameNumber,
                              std::int64_t frameCount, FrameChunk& chunk);

}  // namespace orvantis
