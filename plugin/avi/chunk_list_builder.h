// Makes a ChunkList, chunk after chunk. What it holds at any time is little more than the finished list.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "avi/avi_structs.h"
#include "avi/chunk_list.h"

namespace orvantis {

class ChunkListBuilder {
 public:
    /// A state to go back to.
    struct Mark {
        std::size_t count;
        std::uint64_t bytes;
    };

    /// Appends a chunk whose data lies at base + offset, modulo 2^64. Chunks that share their base are
    /// appended fastest. Throws std::bad_alloc, and then nothing was appended.
    void add(std::uint64_t base, std::uint32_t offset, std::uint32_t size, bool keyFrame) {
        const std::size_t at = m_list.m_count % ChunkBlock::kChunks;
        if (at == 0) {
            openBlock(base);
        }
        if (m_block->base == base && !m_block->wide && leavesRoomForMark(size)) {
            m_block->entries[at] = {offset, markedSize(size, keyFrame)};
        } else {
            addOutOfLine(base + offset, size, keyFrame);
        }
        ++m_list.m_count;
        m_bytes += size;
    }
    /// Appends chunks as a standard index has them. Throws std::bad_alloc; some of them may have been
    /// appended.
    void add(std::uint64_t base, std::span<const AviStdIndexEntry> entries);

    Mark mark() const noexcept { return {m_list.m_count, m_bytes}; }
    /// Takes back what was appended since.
    void backTo(const Mark& mark) noexcept;

    /// The list, at its final size. The builder is empty again.
    ChunkList finish() noexcept;

 private:
    void openBlock(std::uint64_t base);
    void growFirstSegment();
    void addOutOfLine(std::uint64_t offset, std::uint32_t size, bool keyFrame);
    ChunkBlock& blockAt(std::size_t number) noexcept {
        return m_list.m_segments[number / ChunkList::kSegmentBlocks][number % ChunkList::kSegmentBlocks];
    }

    ChunkList m_list;
    ChunkBlock* m_block = nullptr;         // the one that the next chunk belongs to, unless that opens one
    std::uint64_t m_bytes = 0;             // sum of all sizes
    std::size_t m_firstSegmentBlocks = 0;  // the first segment grows, the others are allocated whole
};

}  // namespace orvantis
