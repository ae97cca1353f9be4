#include "avi/chunk_list_builder.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <utility>

namespace orvantis {

namespace {

using Blocks = std::unique_ptr<ChunkBlock[]>;

Blocks copyOf(Blocks& blocks, std::size_t used, std::size_t capacity) {
    auto copy = std::make_unique_for_overwrite<ChunkBlock[]>(capacity);
    std::move(blocks.get(), blocks.get() + used, copy.get());
    return copy;
}

// Lets the first `count` chunks and one at `offset` count from the lowest of them. False when they lie too
// far apart.
bool rebase(ChunkBlock& block, std::size_t count, std::uint64_t offset) noexcept {
    std::uint64_t lowest = offset;
    std::uint64_t highest = offset;
    for (std::size_t i = 0; i < count; ++i) {
        lowest = std::min(lowest, block.offsetAt(i));
        highest = std::max(highest, block.offsetAt(i));
    }
    if (!isNarrow(highest, lowest)) {
        return false;
    }
    for (std::size_t i = 0; i < count; ++i) {
        block.entries[i].dwOffset = narrowOffset(block.offsetAt(i), lowest);
    }
    block.base = lowest;
    return true;
}

// Brings the first `count` chunks into the wide form.
void widen(ChunkBlock& block, std::size_t count) {
    auto wide = std::make_unique_for_overwrite<ChunkBlock::Wide>();
    wide->deltaFrames = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const IndexEntry entry = block.entryAt(i, 0);
        wide->offsetHigh[i] = static_cast<std::uint32_t>(entry.offset >> 32);
        if (!entry.keyFrame) {
            wide->deltaFrames |= std::uint64_t{1} << i;
        }
        block.entries[i] = {static_cast<std::uint32_t>(entry.offset), entry.size};
    }
    block.wide = std::move(wide);
}

}  // namespace

void ChunkListBuilder::openBlock(std::uint64_t base) {
    // not covered when true: 4,294,967,232 chunks would take 35 GB
    if (!mayOpenBlock(m_list.m_count, ChunkBlock::kChunks)) {
        throw std::bad_alloc();
    }
    const std::size_t number = m_list.m_count / ChunkBlock::kChunks;
    const std::size_t segment = number / ChunkList::kSegmentBlocks;
    if (segment == 0 && number >= m_firstSegmentBlocks) {
        growFirstSegment();
    }
    if (segment >= m_list.m_segments.size()) {
        m_list.m_segments.push_back(std::make_unique_for_overwrite<ChunkBlock[]>(ChunkList::kSegmentBlocks));
    }
    m_block = &blockAt(number);
    m_block->base = base;
    m_block->start = m_bytes;
    m_block->wide.reset();  // of a chunk taken back
}

void ChunkListBuilder::growFirstSegment() {
    constexpr std::size_t kGrowth = 4;
    const std::size_t blocks =
        std::min(std::max<std::size_t>(m_firstSegmentBlocks * kGrowth, 1), ChunkList::kSegmentBlocks);
    if (m_list.m_segments.empty()) {
        m_list.m_segments.emplace_back();
    }
    m_list.m_segments[0] = copyOf(m_list.m_segments[0], m_firstSegmentBlocks, blocks);
    m_firstSegmentBlocks = blocks;
}

void ChunkListBuilder::addOutOfLine(std::uint64_t offset, std::uint32_t size, bool keyFrame) {
    ChunkBlock& block = *m_block;
    const std::size_t at = m_list.m_count % ChunkBlock::kChunks;
    if (!block.wide) {
        const bool fits =
            leavesRoomForMark(size) && (isNarrow(offset, block.base) || rebase(block, at, offset));
        if (fits) {
            block.entries[at] = {narrowOffset(offset, block.base), markedSize(size, keyFrame)};
            return;
        }
        widen(block, at);
    }
    const std::uint64_t bit = std::uint64_t{1} << at;
    block.wide->offsetHigh[at] = static_cast<std::uint32_t>(offset >> 32);
    block.wide->deltaFrames = keyFrame ? block.wide->deltaFrames & ~bit : block.wide->deltaFrames | bit;
    block.entries[at] = {static_cast<std::uint32_t>(offset), size};
}

void ChunkListBuilder::add(std::uint64_t base, std::span<const AviStdIndexEntry> entries) {
    while (!entries.empty()) {
        const std::size_t at = m_list.m_count % ChunkBlock::kChunks;
        if (at == 0) {
            openBlock(base);
        }
        const std::size_t count = std::min(entries.size(), ChunkBlock::kChunks - at);
        if (m_block->base == base && !m_block->wide) {
            std::memcpy(&m_block->entries[at], entries.data(), count * sizeof(AviStdIndexEntry));
            m_bytes += m_block->bytesOf(at, at + count);
            m_list.m_count += count;
        } else {
            for (const AviStdIndexEntry& entry : entries.first(count)) {
                add(base, entry.dwOffset, entry.dwSize & ~kStdIndexDeltaFrame,
                    (entry.dwSize & kStdIndexDeltaFrame) == 0);
            }
        }
        entries = entries.subspan(count);
    }
}

void ChunkListBuilder::backTo(const Mark& mark) noexcept {
    m_list.m_count = mark.count;
    m_bytes = mark.bytes;
    // A block that was changed meanwhile still tells the same of what is left in it.
    if (mark.count % ChunkBlock::kChunks != 0) {
        m_block = &blockAt(mark.count / ChunkBlock::kChunks);
    }
}

ChunkList ChunkListBuilder::finish() noexcept {
    const std::size_t blocks = (m_list.m_count + ChunkBlock::kChunks - 1) / ChunkBlock::kChunks;
    const std::size_t segments = (blocks + ChunkList::kSegmentBlocks - 1) / ChunkList::kSegmentBlocks;
    m_list.m_segments.resize(segments);
    const std::size_t capacity = segments == 1 ? m_firstSegmentBlocks : ChunkList::kSegmentBlocks;
    const std::size_t used = blocks - (segments == 0 ? 0 : segments - 1) * ChunkList::kSegmentBlocks;
    if (segments != 0 && used < capacity) {
        try {
            m_list.m_segments.back() = copyOf(m_list.m_segments.back(), used, used);
        } catch (const std::exception&) {
            // Out of memory for a smaller copy: the larger one stays.
        }
    }
    ChunkList list = std::move(m_list);
    *this = ChunkListBuilder();
    return list;
}

}  // namespace orvantis
