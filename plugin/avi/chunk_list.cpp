#include "avi/chunk_list.h"

#include <algorithm>
#include <stdexcept>

namespace orvantis {

IndexEntry ChunkList::operator[](std::size_t number) const noexcept {
    const ChunkBlock& found = blockOf(number);
    const std::size_t i = number % ChunkBlock::kChunks;
    return found.entryAt(i, found.startAt(i));
}

IndexEntry ChunkList::at(std::size_t number) const {
    if (number >= m_count) {
        throw std::out_of_range("ChunkList::at");
    }
    return (*this)[number];
}

std::uint64_t ChunkList::totalBytes() const noexcept {
    if (empty()) {
        return 0;
    }
    return blockOf(m_count - 1).startAt((m_count - 1) % ChunkBlock::kChunks + 1);
}

ChunkList::Iterator ChunkList::findByPosition(std::uint64_t bytePos) const noexcept {
    if (empty()) {
        return end();
    }
    // The last block that starts at or ahead of the position; the first one starts at 0.
    std::size_t low = 0;
    std::size_t high = (m_count - 1) / ChunkBlock::kChunks + 1;
    while (high - low > 1) {
        const std::size_t middle = low + (high - low) / 2;
        (block(middle).start <= bytePos ? low : high) = middle;
    }
    const ChunkBlock& found = block(low);
    const std::size_t first = low * ChunkBlock::kChunks;
    const std::size_t count = std::min(m_count - first, ChunkBlock::kChunks);
    const std::uint32_t mask = found.sizeMask();
    std::uint64_t start = found.start;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t size = found.entries[i].dwSize & mask;
        if (hasByte(bytePos, start, size)) {
            return {*this, &found, first + i, start};
        }
        start += size;
    }
    return end();
}

}  // namespace orvantis
