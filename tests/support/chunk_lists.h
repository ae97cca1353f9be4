// Chunk lists made by hand. The starts of the entries given are not looked at: a list sums up its own.
#pragma once

#include <cstddef>
#include <vector>

#include "avi/chunk_list_builder.h"

namespace orvantis::test {

inline ChunkList chunkListOf(const std::vector<IndexEntry>& entries) {
    ChunkListBuilder builder;
    for (const IndexEntry& entry : entries) {
        builder.add(entry.offset, 0, entry.size, entry.keyFrame);
    }
    return builder.finish();
}

inline std::vector<IndexEntry> entriesOf(const ChunkList& list) {
    return {list.begin(), list.end()};
}

inline void appendChunk(ChunkList& list, const IndexEntry& entry) {
    std::vector<IndexEntry> entries = entriesOf(list);
    entries.push_back(entry);
    list = chunkListOf(entries);
}

/// Makes the list anew with another offset for one chunk.
inline void moveChunk(ChunkList& list, std::size_t number, std::uint64_t offset) {
    std::vector<IndexEntry> entries = entriesOf(list);
    entries.at(number).offset = offset;
    list = chunkListOf(entries);
}

/// Makes the list anew with another size for one chunk.
inline void resizeChunk(ChunkList& list, std::size_t number, std::uint32_t size) {
    std::vector<IndexEntry> entries = entriesOf(list);
    entries.at(number).size = size;
    list = chunkListOf(entries);
}

}  // namespace orvantis::test
