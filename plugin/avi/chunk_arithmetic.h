// Places of data chunks, and how a chunk list stores them in half of the bits. Templates over the numbers
// (numbers/machine.h), which are proven in tests/proofs.
#pragma once

#include "numbers/machine.h"

namespace orvantis {

/// Chunks of a list are numbered in 32 bits.
inline constexpr std::uint64_t kMaxChunkNumber = 0xFFFFFFFF;
/// The bit of a stored size that marks a delta frame.
inline constexpr std::uint32_t kDeltaFrameBit = 0x80000000;

/// Whether an offset can be told as 32 bits from `base` on, modulo 2^64.
template <class A = Machine>
constexpr typename A::Bool isNarrow(typename A::U64 offset, typename A::U64 base) noexcept {
    return A::template guarded<Guard::kNarrowOffset>(offset - base <= typename A::U64{0xFFFFFFFF});
}
/// Those 32 bits, and the way back.
template <class A = Machine>
constexpr typename A::U32 narrowOffset(typename A::U64 offset, typename A::U64 base) noexcept {
    return static_cast<typename A::U32>(offset - base);
}
template <class A = Machine>
constexpr typename A::U64 wideOffset(typename A::U32 narrow, typename A::U64 base) noexcept {
    return base + static_cast<typename A::U64>(narrow);
}

/// Whether a size leaves room for the mark of a delta frame.
template <class A = Machine>
constexpr typename A::Bool leavesRoomForMark(typename A::U32 size) noexcept {
    return A::template guarded<Guard::kNarrowSize>(size < typename A::U32{kDeltaFrameBit});
}
template <class A = Machine>
constexpr typename A::U32 markedSize(typename A::U32 size, typename A::Bool keyFrame) noexcept {
    return A::choose(
        keyFrame, [&] { return size; }, [&] { return size | typename A::U32{kDeltaFrameBit}; });
}

/// Whether a list of `count` chunks, `blockChunks` to a block, may open another block.
template <class A = Machine>
constexpr typename A::Bool mayOpenBlock(typename A::U64 count, typename A::U64 blockChunks) noexcept {
    return A::template guarded<Guard::kChunkNumbers>(count <= typename A::U64{kMaxChunkNumber} - blockChunks);
}

/// Whether a chunk of `size` bytes that starts at or ahead of `bytePos` in its stream has that byte.
template <class A = Machine>
constexpr typename A::Bool hasByte(typename A::U64 bytePos, typename A::U64 start,
                                   typename A::U32 size) noexcept {
    return bytePos - start < static_cast<typename A::U64>(size);
}

/// Bytes of the file from `offset` on.
template <class A = Machine>
constexpr typename A::U64 bytesBehind(typename A::U64 offset, typename A::U64 fileSize) noexcept {
    return A::choose(
        A::template guarded<Guard::kClaimStartsInFile>(offset <= fileSize), [&] { return fileSize - offset; },
        [] { return typename A::U64{0}; });
}

/// Bytes of a chunk of `size` bytes from `offset` in it on (at most its size), `wanted` at most.
template <class A = Machine>
constexpr typename A::U64 partOfChunk(typename A::U32 size, typename A::U64 offset,
                                      typename A::U64 wanted) noexcept {
    const typename A::U64 left = static_cast<typename A::U64>(size) - offset;
    return A::choose(
        A::template guarded<Guard::kAudioPart>(left <= wanted), [&] { return left; }, [&] { return wanted; });
}

}  // namespace orvantis
