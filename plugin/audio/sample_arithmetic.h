// Positions and sizes of sample frames, which the host may ask for in any number. Templates over the numbers
// (numbers/machine.h), which are proven in tests/proofs.
#pragma once

#include "numbers/machine.h"

namespace orvantis {

/// Where sequential reads go on behind `size` sample frames from `start` on; goes round in 64 bits.
template <class A = Machine>
constexpr typename A::I64 endPosition(typename A::I64 start, typename A::U32 size) noexcept {
    return static_cast<typename A::I64>(static_cast<typename A::U64>(start) +
                                        static_cast<typename A::U64>(size));
}

/// The stream's byte at which a sample frame begins; goes round in 64 bits.
template <class A = Machine>
constexpr typename A::U64 firstByteOf(typename A::I64 position, typename A::U32 blockAlign) noexcept {
    return static_cast<typename A::U64>(blockAlign) * static_cast<typename A::U64>(position);
}

/// Bytes of `size` sample frames. Deliberately 32 bits wide: a request of 4 GiB and more wraps, and only the
/// rest is read.
template <class A = Machine>
constexpr typename A::U32 bytesOfFrames(typename A::U32 size, typename A::U32 blockAlign) noexcept {
    return blockAlign * size;
}

/// Sample frames in a buffer of `bytes`, at most `size`: a wrapped request leaves fewer than the host has
/// room for.
template <class A = Machine>
constexpr typename A::U32 framesInBuffer(typename A::U32 bytes, typename A::U32 size,
                                         typename A::U32 blockAlign) noexcept {
    return A::choose(
        A::template guarded<Guard::kSampleFrameHasSize>(blockAlign != typename A::U32{0}),
        [&] {
            const typename A::U32 held = bytes / blockAlign;
            return A::choose(
                A::template guarded<Guard::kFramesInBuffer>(size <= held), [&] { return size; },
                [&] { return held; });
        },
        [] { return typename A::U32{0}; });
}

}  // namespace orvantis
