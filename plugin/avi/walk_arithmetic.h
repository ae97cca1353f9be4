// Positions and sizes of chunks on the way through a RIFF file. Templates over the numbers
// (numbers/machine.h), which are proven in tests/proofs.
#pragma once

#include "numbers/machine.h"

namespace orvantis {

/// Header and data of a chunk, up to the next even length. The format's arithmetic is 32 bits wide, so the
/// largest sizes wrap.
template <class A = Machine>
constexpr typename A::U32 paddedLength(typename A::U32 size) noexcept {
    return (size + typename A::U32{8 + 1}) & ~typename A::U32{1};
}

/// Whether a walk gets on by that length: where it has wrapped to nothing the walk would stand still.
template <class A = Machine>
constexpr typename A::Bool walkMovesOn(typename A::U32 padded) noexcept {
    return A::template guarded<Guard::kWalkMovesOn>(padded != typename A::U32{0});
}

/// What is left of a level of `bytes` when `consumed` are behind; the last chunk may reach beyond its end.
template <class A = Machine>
constexpr typename A::U64 restOfLevel(typename A::U64 bytes, typename A::U64 consumed) noexcept {
    return A::choose(
        A::template guarded<Guard::kRestOfLevel>(consumed <= bytes), [&] { return bytes - consumed; },
        [] { return typename A::U64{0}; });
}

/// Bytes of a list behind its type. `size` includes the type, or has no room for it.
template <class A = Machine>
constexpr typename A::U32 listDataSize(typename A::U32 size) noexcept {
    return A::choose(
        A::template guarded<Guard::kRoomForListType>(size >= typename A::U32{4}),
        [&] { return size - typename A::U32{4}; }, [] { return typename A::U32{0}; });
}

/// Whether a file of `fileSize` bytes has `count` of them from `position` on.
template <class A = Machine>
constexpr typename A::Bool isInFile(typename A::U64 position, typename A::U64 count,
                                    typename A::U64 fileSize) noexcept {
    return A::template guarded<Guard::kStartInFile>(position <= fileSize) &&
           A::template guarded<Guard::kEndInFile>(count <= fileSize - position);
}

/// Whether a window of `count` bytes on `position` has the `length` bytes from `at` on.
template <class A = Machine>
constexpr typename A::Bool isInWindow(typename A::U64 at, typename A::U64 length, typename A::U64 position,
                                      typename A::U64 count) noexcept {
    return A::template guarded<Guard::kWindowStart>(at >= position) &&
           A::template guarded<Guard::kWindowSkip>(at - position <= count) &&
           A::template guarded<Guard::kWindowEnd>(length <= count - (at - position));
}

/// How many chunks a walk may collect: one for each header that fits into the file and some for small files
/// with odd, but harmless, lists, and never more than `most`.
template <class A = Machine>
constexpr typename A::U64 mostChunks(typename A::U64 fileSize, typename A::U64 most) noexcept {
    const typename A::U64 headers = fileSize / typename A::U64{8} + typename A::U64{1024};
    return A::choose(
        A::template guarded<Guard::kMostChunks>(headers <= most), [&] { return headers; },
        [&] { return most; });
}

}  // namespace orvantis
