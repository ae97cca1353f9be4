// Sizes and counts in the indexes of an AVI file. Templates over the numbers (numbers/machine.h), which are
// proven in tests/proofs.
#pragma once

#include "numbers/machine.h"

namespace orvantis {

/// Bytes of an OpenDML index ahead of its entries.
inline constexpr std::uint32_t kIndexHeaderSize = 24;
/// Streams that idx1 can name, by two decimal digits; no stream beyond these has a list from it.
inline constexpr std::uint32_t kLegacyPositions = 100;

/// Whether index data of that size has a header.
template <class A = Machine>
constexpr typename A::Bool hasIndexHeader(typename A::U32 dataSize) noexcept {
    return A::template guarded<Guard::kIndexHeaderInData>(dataSize >= typename A::U32{kIndexHeaderSize});
}

/// How many of the `claimed` entries of `entrySize` bytes index data with a header holds. Entries without a
/// size take nothing, however many they are.
template <class A = Machine>
constexpr typename A::U32 entriesInData(typename A::U32 dataSize, typename A::U32 claimed,
                                        typename A::U32 entrySize) noexcept {
    return A::choose(
        A::template guarded<Guard::kIndexEntryHasSize>(entrySize != typename A::U32{0}),
        [&] {
            const typename A::U32 held = (dataSize - typename A::U32{kIndexHeaderSize}) / entrySize;
            return A::choose(
                A::template guarded<Guard::kIndexEntriesInData>(claimed <= held), [&] { return claimed; },
                [&] { return held; });
        },
        [&] { return claimed; });
}

/// Of a piece of `bytes` that begins `done` bytes into the entries: how many belong to entries in use, which
/// take `used` bytes.
template <class A = Machine>
constexpr typename A::U32 usedInPiece(typename A::U32 bytes, typename A::U32 used,
                                      typename A::U32 done) noexcept {
    const typename A::U32 left = A::choose(
        A::template guarded<Guard::kIndexUsedAhead>(done <= used), [&] { return used - done; },
        [] { return typename A::U32{0}; });
    return A::choose(
        A::template guarded<Guard::kIndexPieceInUse>(left <= bytes), [&] { return left; },
        [&] { return bytes; });
}

/// Data of an index chunk whose size, as a super index tells it, includes the chunk's header.
template <class A = Machine>
constexpr typename A::U32 sizeWithoutHeader(typename A::U32 size) noexcept {
    return A::choose(
        A::template guarded<Guard::kRoomForChunkHeader>(size >= typename A::U32{8}),
        [&] { return size - typename A::U32{8}; }, [] { return typename A::U32{0}; });
}

/// How many bytes of indexes may be read for one file: all of it twice, and `spare` more. The largest sizes
/// that a sparse file can have count as a quarter of what 64 bits hold.
template <class A = Machine>
constexpr typename A::U64 indexByteBudget(typename A::U64 fileSize, typename A::U64 spare) noexcept {
    constexpr std::uint64_t kMost = std::uint64_t{1} << 62;
    const typename A::U64 counted = A::choose(
        A::template guarded<Guard::kIndexBudgetFits>(fileSize <= typename A::U64{kMost}),
        [&] { return fileSize; }, [] { return typename A::U64{kMost}; });
    return typename A::U64{2} * counted + spare;
}

/// Whether `size` bytes are left in the budget.
template <class A = Machine>
constexpr typename A::Bool isInBudget(typename A::U32 size, typename A::U64 bytesLeft) noexcept {
    return A::template guarded<Guard::kIndexBudget>(static_cast<typename A::U64>(size) <= bytesLeft);
}

/// The stream position in a chunk code's first two characters, or kLegacyPositions when they are no digits.
template <class A = Machine>
constexpr typename A::U32 legacyPosition(typename A::U32 chunkCode) noexcept {
    using U32 = typename A::U32;
    const U32 tens = (chunkCode & U32{0xFF}) - U32{'0'};
    const U32 ones = (chunkCode >> 8 & U32{0xFF}) - U32{'0'};
    return A::choose(
        A::template guarded<Guard::kStreamDigits>(tens < U32{10} && ones < U32{10}),
        [&] { return tens * U32{10} + ones; }, [] { return U32{kLegacyPositions}; });
}

}  // namespace orvantis
