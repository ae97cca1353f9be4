// The plainest chunk list: a vector of whole entries, 32 bytes each. What a ChunkList answers is compared
// with it, and so is what an answer costs. It has all of the interface, so that the plug-in's sources compile
// with either.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <new>
#include <span>
#include <utility>
#include <vector>

#include "avi/avi_structs.h"
#include "avi/index_entry.h"

namespace orvantis {

class PlainChunkList {
 public:
    class Iterator {
     public:
        using iterator_category = std::input_iterator_tag;
        using difference_type = std::ptrdiff_t;
        using value_type = IndexEntry;
        using reference = const IndexEntry&;
        using pointer = const IndexEntry*;

        Iterator() = default;
        Iterator(const IndexEntry* first, const IndexEntry* entry) noexcept
            : m_first(first), m_entry(entry) {}
        const IndexEntry& operator*() const noexcept { return *m_entry; }
        Iterator& operator++() noexcept {
            ++m_entry;
            return *this;
        }
        std::size_t number() const noexcept { return static_cast<std::size_t>(m_entry - m_first); }
        bool operator==(const Iterator& other) const noexcept { return m_entry == other.m_entry; }

     private:
        const IndexEntry* m_first = nullptr;
        const IndexEntry* m_entry = nullptr;
    };

    PlainChunkList() = default;
    explicit PlainChunkList(std::vector<IndexEntry>&& entries) noexcept : m_entries(std::move(entries)) {}

    std::size_t size() const noexcept { return m_entries.size(); }
    bool empty() const noexcept { return m_entries.empty(); }
    const IndexEntry& operator[](std::size_t number) const noexcept { return m_entries[number]; }
    const IndexEntry& at(std::size_t number) const { return m_entries.at(number); }
    const IndexEntry& back() const noexcept { return m_entries.back(); }
    ChunkPlace placeOf(std::size_t number) const noexcept {
        return {m_entries[number].offset, m_entries[number].size};
    }
    Iterator begin() const noexcept { return {m_entries.data(), m_entries.data()}; }
    Iterator end() const noexcept { return {m_entries.data(), m_entries.data() + m_entries.size()}; }

    std::uint64_t totalBytes() const noexcept {
        return m_entries.empty() ? 0 : m_entries.back().start + m_entries.back().size;
    }
    Iterator findByPosition(std::uint64_t bytePos) const noexcept {
        const auto after =
            std::upper_bound(m_entries.begin(), m_entries.end(), bytePos,
                             [](std::uint64_t pos, const IndexEntry& entry) { return pos < entry.start; });
        if (after == m_entries.begin()) {
            return end();
        }
        const IndexEntry& candidate = *(after - 1);
        return bytePos - candidate.start < candidate.size ? Iterator(m_entries.data(), &candidate) : end();
    }

 private:
    std::vector<IndexEntry> m_entries;
};

class PlainChunkListBuilder {
 public:
    struct Mark {
        std::size_t count;
        std::uint64_t bytes;
    };

    void add(std::uint64_t base, std::uint32_t offset, std::uint32_t size, bool keyFrame) {
        if (m_entries.size() == std::numeric_limits<std::uint32_t>::max()) {
            throw std::bad_alloc();
        }
        m_entries.push_back(IndexEntry{base + offset, size, 0, m_bytes, keyFrame});
        m_bytes += size;
    }
    void add(std::uint64_t base, std::span<const AviStdIndexEntry> entries) {
        for (const AviStdIndexEntry& entry : entries) {
            add(base, entry.dwOffset, entry.dwSize & ~kStdIndexDeltaFrame,
                (entry.dwSize & kStdIndexDeltaFrame) == 0);
        }
    }
    Mark mark() const noexcept { return {m_entries.size(), m_bytes}; }
    void backTo(const Mark& mark) noexcept {
        m_entries.resize(mark.count);
        m_bytes = mark.bytes;
    }
    PlainChunkList finish() noexcept {
        m_bytes = 0;
        return PlainChunkList(std::exchange(m_entries, {}));
    }

 private:
    std::vector<IndexEntry> m_entries;
    std::uint64_t m_bytes = 0;
};

}  // namespace orvantis
