// OpenDML's indexes and idx1 as bytes ("OpenDML AVI File Format Extensions" 1.02, "AVI RIFF File Reference").
// Pure functions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "tool/rescue/found_chunks.h"

namespace simhost::tool {

using FileBytes = std::vector<std::uint8_t>;

inline constexpr std::uint64_t kChunkHeaderSize = 8;
inline constexpr std::uint64_t kListHeaderSize = 12;
inline constexpr std::uint64_t kIndexHeaderSize = 24;  ///< of an OpenDML index, behind its chunk's header
inline constexpr std::uint64_t kStandardEntrySize = 8;
inline constexpr std::uint64_t kSuperEntrySize = 16;
inline constexpr std::uint64_t kOldEntrySize = 16;

void put16(FileBytes& out, std::uint32_t value);
void put32(FileBytes& out, std::uint32_t value);
void put64(FileBytes& out, std::uint64_t value);
/// Code and size.
void putHeader(FileBytes& out, std::uint32_t code, std::uint64_t size);
/// Code, size and type.
void putList(FileBytes& out, std::uint32_t code, std::uint64_t size, std::uint32_t type);

/// One standard index of a stream: `ix00`.
struct StandardIndexPlan {
    unsigned stream = 0;
    std::uint32_t code = 0;  ///< of the stream's chunks
    std::uint64_t base = 0;  ///< what its offsets count from
    std::uint64_t at = 0;    ///< where its chunk begins
    std::size_t first = 0;   ///< of the chunks that it looks through
    std::size_t last = 0;    ///< behind the last one of them
    std::uint32_t entries = 0;
    std::uint64_t duration = 0;  ///< in the stream's own units

    std::uint64_t size() const noexcept {
        return kChunkHeaderSize + kIndexHeaderSize + kStandardEntrySize * entries;
    }
};

/// The start of that index's chunk; the entries follow.
void putStandardIndexStart(FileBytes& out, const StandardIndexPlan& plan);
void putStandardEntry(FileBytes& out, std::uint64_t base, std::uint64_t offset, const FoundChunk& chunk);
/// Data of `indx`, `size` bytes with zeros behind the entries.
FileBytes superIndex(std::span<const StandardIndexPlan> indexes, std::uint64_t size);
/// One entry of idx1. `offset` is that of the chunk's header from the list type of 'movi'.
void putOldEntry(FileBytes& out, std::uint64_t offset, const FoundChunk& chunk);

}  // namespace simhost::tool
