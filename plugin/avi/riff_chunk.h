// One chunk or list of a RIFF file's chunk tree.
#pragma once

#include <cstdint>
#include <vector>

#include "avi/four_char_code.h"
#include "avi/walk_arithmetic.h"

namespace orvantis {

struct RiffChunk {
    std::uint32_t id = 0;             ///< "RIFF", "LIST", or the chunk's own code
    std::uint32_t size = 0;           ///< as stored; a list's includes its 4-byte type
    std::uint64_t offset = 0;         ///< file position of the 8-byte header
    std::uint32_t type = 0;           ///< list or form type; 0 for a chunk that is no list
    std::vector<RiffChunk> children;  ///< of the lists that the walk descends into

    bool isList() const noexcept { return id == riffCode("RIFF") || id == riffCode("LIST"); }
    bool isListOf(std::uint32_t listType) const noexcept { return isList() && type == listType; }

    /// Bytes of data behind the header, or behind the list type.
    std::uint32_t dataSize() const noexcept {
        if (!isList()) {
            return size;
        }
        return listDataSize(size);
    }
    /// File position of that data.
    std::uint64_t dataPosition() const noexcept { return offset + (isList() ? 12 : 8); }
};

/// The first chunk with this id (lists are asked for by their type), or null.
inline const RiffChunk* findChunk(const std::vector<RiffChunk>& list, std::uint32_t id) noexcept {
    for (const RiffChunk& chunk : list) {
        if (chunk.id == id) {
            return &chunk;
        }
    }
    return nullptr;
}

/// The first list or form of this type, or null.
inline const RiffChunk* findList(const std::vector<RiffChunk>& list, std::uint32_t type) noexcept {
    for (const RiffChunk& chunk : list) {
        if (chunk.isListOf(type)) {
            return &chunk;
        }
    }
    return nullptr;
}

}  // namespace orvantis
