// One data chunk of one stream, as the lookups by frame number and by byte position use it.
#pragma once

#include <cstdint>

namespace orvantis {

struct IndexEntry {
    std::uint64_t offset;    ///< absolute file position of the chunk's data, behind its 8-byte header
    std::uint32_t size;      ///< bytes of data
    std::uint32_t reserved;  ///< always 0
    std::uint64_t
        start;      ///< sum of the sizes of all earlier entries: the chunk's byte position inside the stream
    bool keyFrame;  ///< as the index says; each frame is decoded by itself, so that playing never asks
};

/// Where a chunk's data lies in the file.
struct ChunkPlace {
    std::uint64_t offset;
    std::uint32_t size;
};

}  // namespace orvantis
