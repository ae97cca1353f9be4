// From a time in the host's ticks to the frame that is shown then. Templates over the numbers
// (numbers/machine.h), which are proven in tests/proofs. No division here can trap, no sum or product
// overflows a signed type.
#pragma once

#include "numbers/machine.h"

namespace orvantis {

inline constexpr std::uint32_t kNoFrame = 0xFFFFFFFF;

/// The absolute value, which has one bit more than a positive number has.
template <class A = Machine>
constexpr typename A::U64 magnitude(typename A::I64 value) noexcept {
    const auto bits = static_cast<typename A::U64>(value);
    return A::choose(
        value < typename A::I64{0}, [&] { return typename A::U64{0} - bits; }, [&] { return bits; });
}

/// factor * value / divisor, truncated, saturated at the largest 64-bit number. The product needs up to 96
/// bits. `divisor` is not 0.
template <class A = Machine>
constexpr typename A::U64 multiplyDivide(typename A::U32 factor, typename A::U64 value,
                                         typename A::U32 divisor) noexcept {
    using U64 = typename A::U64;
    const U64 wide = static_cast<U64>(factor);
    const U64 by = static_cast<U64>(divisor);
    const U64 low = wide * (value & U64{0xFFFFFFFF});
    const U64 high = wide * (value >> 32) + (low >> 32);  // the product's bits from 32 on
    // Long division by one 32-bit digit: the remainder of the high part stands ahead of the low digit.
    const U64 quotientHigh = high / by;
    return A::choose(
        A::template guarded<Guard::kQuotientFits>(quotientHigh <= U64{0xFFFFFFFF}),
        [&] {
            const U64 quotientLow = ((high % by) << 32 | (low & U64{0xFFFFFFFF})) / by;
            return quotientHigh << 32 | quotientLow;
        },
        [] { return ~U64{0}; });
}

/// Ticks that one frame of numerator / denominator a second lasts, without its sign; saturated. The numerator
/// is not 0.
template <class A = Machine>
constexpr typename A::U64 ticksPerFrame(typename A::I32 numerator, typename A::I32 denominator,
                                        typename A::I64 ticksPerSecond) noexcept {
    using I64 = typename A::I64;
    using U32 = typename A::U32;
    return multiplyDivide<A>(static_cast<U32>(magnitude<A>(static_cast<I64>(denominator))),
                             magnitude<A>(ticksPerSecond),
                             static_cast<U32>(magnitude<A>(static_cast<I64>(numerator))));
}

/// frameTime / ticks, truncated, low 32 bits; kNoFrame where a frame lasts no tick. A frame's length is given
/// without its sign, which is in `backwards`. Truncating division commutes with the sign, so the sizes are
/// divided and the sign is put back at the end.
template <class A = Machine>
constexpr typename A::U32 frameOfTime(typename A::I64 frameTime, typename A::U64 ticks,
                                      typename A::Bool backwards) noexcept {
    using U32 = typename A::U32;
    using U64 = typename A::U64;
    return A::choose(
        A::template guarded<Guard::kFrameLastsATick>(ticks != U64{0}),
        [&] {
            const U64 index = magnitude<A>(frameTime) / ticks;
            return A::choose((frameTime < typename A::I64{0}) != backwards,
                             [&] { return static_cast<U32>(U64{0} - index); },
                             [&] { return static_cast<U32>(index); });
        },
        [] { return U32{kNoFrame}; });
}

/// frameTime / (denominator * ticksPerSecond / numerator), both truncated, low 32 bits; kNoFrame where that
/// has no value. A frame's length beyond 64 bits saturates: every time then lies in frame 0.
template <class A = Machine>
constexpr typename A::U32 frameIndex(typename A::I64 frameTime, typename A::I32 numerator,
                                     typename A::I32 denominator, typename A::I64 ticksPerSecond) noexcept {
    using I32 = typename A::I32;
    using I64 = typename A::I64;
    return A::choose(
        A::template guarded<Guard::kRateHasNumerator>(numerator != I32{0}),
        [&] {
            return frameOfTime<A>(
                frameTime, ticksPerFrame<A>(numerator, denominator, ticksPerSecond),
                (denominator < I32{0}) != ((ticksPerSecond < I64{0}) != (numerator < I32{0})));
        },
        [] { return typename A::U32{kNoFrame}; });
}

}  // namespace orvantis
