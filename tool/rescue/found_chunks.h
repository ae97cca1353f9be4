// The chunks that a search has found, in the order of the file: 16 bytes each, so that a million frames take
// 16 MB.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace simhost::tool {

/// A whole chunk of a stream.
class FoundChunk {
 public:
    FoundChunk() = default;
    /// `offset` is that of the data, behind the 8-byte header, below 2^48.
    FoundChunk(std::uint64_t offset, std::uint32_t size, std::uint32_t code, unsigned stream)
        : m_place(offset | std::uint64_t{stream} << kStreamBit), m_size(size), m_code(code) {}

    std::uint64_t offset() const noexcept { return m_place & kMostOffset; }
    std::uint64_t end() const noexcept { return offset() + m_size; }
    std::uint32_t size() const noexcept { return m_size; }
    /// "00dc", first letter in the lowest byte.
    std::uint32_t code() const noexcept { return m_code; }
    unsigned stream() const noexcept { return static_cast<unsigned>(m_place >> kStreamBit) & 0x7F; }
    /// What no index tells is taken for a key frame.
    bool isDelta() const noexcept { return (m_place >> kDeltaBit & 1) != 0; }
    void makeDelta() noexcept { m_place |= std::uint64_t{1} << kDeltaBit; }
    /// A change of the palette, which takes no time and is no frame.
    bool isPalette() const noexcept { return (m_code >> 16) == ('p' | 'c' << 8); }

    static constexpr std::uint64_t kMostOffset = (std::uint64_t{1} << 48) - 1;

 private:
    static constexpr unsigned kStreamBit = 48;
    static constexpr unsigned kDeltaBit = 63;

    std::uint64_t m_place = 0;
    std::uint32_t m_size = 0;
    std::uint32_t m_code = 0;
};
static_assert(sizeof(FoundChunk) == 16);

/// Grows without being copied.
class FoundChunks {
 public:
    /// Beyond any recording: a gigabyte of memory.
    static constexpr std::size_t kMost = std::size_t{1} << 26;

    std::size_t size() const noexcept { return m_size; }
    bool empty() const noexcept { return m_size == 0; }
    const FoundChunk& operator[](std::size_t i) const noexcept { return (*m_blocks[i / kBlock])[i % kBlock]; }
    FoundChunk& operator[](std::size_t i) noexcept { return (*m_blocks[i / kBlock])[i % kBlock]; }
    const FoundChunk& back() const noexcept { return (*this)[m_size - 1]; }
    void add(const FoundChunk& chunk) {
        if (m_size == m_blocks.size() * kBlock) {
            m_blocks.push_back(std::make_unique<std::array<FoundChunk, kBlock>>());
        }
        (*this)[m_size++] = chunk;
    }
    /// `numbers` ascend.
    void remove(std::span<const std::size_t> numbers) noexcept {
        auto gone = numbers.begin();
        std::size_t kept = 0;
        for (std::size_t i = 0; i < m_size; ++i) {
            if (gone != numbers.end() && *gone == i) {
                ++gone;
            } else {
                (*this)[kept++] = (*this)[i];
            }
        }
        m_size = kept;
    }
    /// The first one whose data begins at `offset` or behind it.
    std::size_t firstFrom(std::uint64_t offset) const noexcept {
        std::size_t low = 0;
        for (std::size_t high = m_size; low < high;) {
            const std::size_t middle = low + (high - low) / 2;
            if ((*this)[middle].offset() < offset) {
                low = middle + 1;
            } else {
                high = middle;
            }
        }
        return low;
    }

 private:
    static constexpr std::size_t kBlock = 4096;

    std::vector<std::unique_ptr<std::array<FoundChunk, kBlock>>> m_blocks;
    std::size_t m_size = 0;
};

}  // namespace simhost::tool
