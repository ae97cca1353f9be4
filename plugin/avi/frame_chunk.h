// Reading the compressed bytes of one video frame.
#pragma once

#include <cstddef>
#include <cstdint>

#include "avi/avi_stream.h"
#include "fileio/file.h"
#include "fileio/read_buffer.h"
#include "host/result_codes.h"

namespace orvantis {

/// Where a frame's compressed bytes are read to. Reused from frame to frame.
struct FrameChunk {
    fileio::ReadBuffer buffer;
    std::size_t bytes = 0;  ///< how many of them belong to the frame read last
};

/// Reads the chunk of frame `frameNumber` of `stream` into `chunk`; an empty chunk is served from its
/// neighbour (and logged). `frameCount` is the video's frame count. Returns imNoErr, imFrameNotFound (no
/// chunk has data) or imFileReadFailed (logged). Throws std::out_of_range when frameNumber is not below the
/// list's length. The caller serialises calls on one file.
std::int32_t readFrameChunk(fileio::File& file, const AviStream& stream, std::uint64_t frameNumber,
                            std::int64_t frameCount, FrameChunk& chunk);

}  // namespace orvantis
