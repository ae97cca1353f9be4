// The data chunks of one stream in the order of its index: by all appearance a list of IndexEntry, stored in
// a quarter of the memory. A clip of an hour has some 400,000 chunks, a project thousands of clips, and all
// of them stand in the host's process. Made by ChunkListBuilder, only read afterwards.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

#include "avi/chunk_block.h"
#include "avi/index_entry.h"

namespace orvantis {

class ChunkList {
 public:
    class Iterator;
    using const_iterator = Iterator;
    using value_type = IndexEntry;

    ChunkList() = default;
    ChunkList(ChunkList&& other) noexcept
        : m_segments(std::move(other.m_segments)), m_count(std::exchange(other.m_count, 0)) {}
    ChunkList& operator=(ChunkList&& other) noexcept {
        m_segments = std::move(other.m_segments);
        m_count = std::exchange(other.m_count, 0);
        return *this;
    }

    std::size_t size() const noexcept { return m_count; }
    bool empty() const noexcept { return m_count == 0; }

    /// By number, in constant time. The entry's start is summed up within its block: placeOf() does without.
    IndexEntry operator[](std::size_t number) const noexcept;
    /// The same; throws std::out_of_range.
    IndexEntry at(std::size_t number) const;
    /// Of a list that is not empty.
    IndexEntry back() const noexcept { return (*this)[m_count - 1]; }
    /// Offset and size alone.
    ChunkPlace placeOf(std::size_t number) const noexcept {
        const ChunkBlock& block = blockOf(number);
        const std::size_t i = number % ChunkBlock::kChunks;
        return {block.offsetAt(i), block.sizeAt(i)};
    }

    /// Going from chunk to chunk looks nothing up.
    Iterator begin() const noexcept;
    Iterator end() const noexcept;

    /// Sum of all sizes.
    std::uint64_t totalBytes() const noexcept;
    /// The chunk whose bytes [start, start + size) hold `bytePos`, or end(). Logarithmic in the blocks, then
    /// within one of them; never an empty chunk.
    Iterator findByPosition(std::uint64_t bytePos) const noexcept;

 private:
    friend class ChunkListBuilder;

    // Blocks are allocated so many at a time, so that a list grows without being copied. The last segment has
    // as many as it needs.
    static constexpr std::size_t kSegmentBlocks = 128;

    const ChunkBlock& block(std::size_t number) const noexcept {
        return m_segments[number / kSegmentBlocks][number % kSegmentBlocks];
    }
    const ChunkBlock& blockOf(std::size_t chunk) const noexcept { return block(chunk / ChunkBlock::kChunks); }

    std::vector<std::unique_ptr<ChunkBlock[]>> m_segments;
    std::size_t m_count = 0;  // of chunks
};

/// Goes through a list in order. The list must outlive it. Entries come by value.
class ChunkList::Iterator {
 public:
    using iterator_category = std::input_iterator_tag;
    using difference_type = std::ptrdiff_t;
    using value_type = IndexEntry;
    using reference = IndexEntry;
    using pointer = void;

    Iterator() = default;

    IndexEntry operator*() const noexcept {
        return m_block->entryAt(m_number % ChunkBlock::kChunks, m_start);
    }
    Iterator& operator++() noexcept {
        m_start += m_block->sizeAt(m_number % ChunkBlock::kChunks);
        if (++m_number % ChunkBlock::kChunks == 0 && m_number < m_list->size()) {
            m_block = &m_list->blockOf(m_number);
        }
        return *this;
    }
    Iterator operator++(int) noexcept {
        const Iterator before = *this;
        ++*this;
        return before;
    }
    /// Of the chunk in the list; size() at the end.
    std::size_t number() const noexcept { return m_number; }

    bool operator==(const Iterator& other) const noexcept { return m_number == other.m_number; }

 private:
    friend class ChunkList;

    Iterator(const ChunkList& list, const ChunkBlock* block, std::size_t number, std::uint64_t start) noexcept
        : m_list(&list), m_block(block), m_number(number), m_start(start) {}

    const ChunkList* m_list = nullptr;
    const ChunkBlock* m_block = nullptr;  // stays on the last one at the end
    std::size_t m_number = 0;
    std::uint64_t m_start = 0;
};

inline ChunkList::Iterator ChunkList::begin() const noexcept {
    return {*this, empty() ? nullptr : &block(0), 0, 0};
}

inline ChunkList::Iterator ChunkList::end() const noexcept {
    return {*this, nullptr, m_count, 0};
}

}  // namespace orvantis
