// Up to 64 consecutive chunks of a stream, the unit in which a chunk list is stored: eight bytes a chunk in
// the ordinary case, twelve where a damaged or odd file needs the full range of offsets and sizes.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "avi/avi_structs.h"
#include "avi/chunk_arithmetic.h"
#include "avi/index_entry.h"

namespace orvantis {

struct ChunkBlock {
    static constexpr std::size_t kChunks = 64;

    /// What does not fit into the ordinary form.
    struct Wide {
        std::array<std::uint32_t, kChunks> offsetHigh;
        std::uint64_t deltaFrames;  ///< bit i: chunk i is no key frame
    };

    std::uint64_t base;          ///< what the offsets count from; nothing in a wide block
    std::uint64_t start;         ///< sum of the sizes of all chunks ahead of the block
    std::unique_ptr<Wide> wide;  ///< null in the ordinary case
    /// As in a standard index: offset from the base, and size with bit 31 marking a delta frame. In a wide
    /// block the low half of the offset, and the size in all 32 bits.
    std::array<AviStdIndexEntry, kChunks> entries;

    std::uint32_t sizeMask() const noexcept { return wide ? 0xFFFFFFFFU : ~kStdIndexDeltaFrame; }
    std::uint32_t sizeAt(std::size_t i) const noexcept { return entries[i].dwSize & sizeMask(); }
    std::uint64_t offsetAt(std::size_t i) const noexcept {
        if (wide) {
            return std::uint64_t{wide->offsetHigh[i]} << 32 | entries[i].dwOffset;
        }
        return wideOffset(entries[i].dwOffset, base);
    }
    bool keyFrameAt(std::size_t i) const noexcept {
        return wide ? (wide->deltaFrames >> i & 1) == 0 : (entries[i].dwSize & kStdIndexDeltaFrame) == 0;
    }
    /// Of chunk `i`, or of the block's end when all the chunks ahead of `i` exist.
    std::uint64_t startAt(std::size_t i) const noexcept { return start + bytesOf(0, i); }
    /// Sum of the sizes of chunks first to last - 1.
    std::uint64_t bytesOf(std::size_t first, std::size_t last) const noexcept {
        // Entry by entry as one word, of which the size is the high half: two are summed up at a time.
        const std::uint64_t mask = sizeMask();
        std::uint64_t sum = 0;
        for (std::size_t i = first; i < last; ++i) {
            sum += std::bit_cast<std::uint64_t>(entries[i]) >> 32 & mask;
        }
        return sum;
    }
    /// `chunkStart` is startAt(i), which the caller knows.
    IndexEntry entryAt(std::size_t i, std::uint64_t chunkStart) const noexcept {
        return IndexEntry{offsetAt(i), sizeAt(i), 0, chunkStart, keyFrameAt(i)};
    }
};

}  // namespace orvantis
