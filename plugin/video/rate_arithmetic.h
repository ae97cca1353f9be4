// Frame rates as a host can work with them. Templates over the numbers (numbers/machine.h), which are proven
// in tests/proofs. No conversion here is out of range, no division traps.
#pragma once

#include "numbers/machine.h"

namespace orvantis {

/// Frames per second, as two numbers of a family.
template <class A = Machine>
struct RateTerms {
    typename A::I32 numerator;
    typename A::I32 denominator;
};

inline constexpr double kRateTolerance = 0.01;
inline constexpr std::uint64_t kMaxHostDuration = 2147483647;  // the host keeps a duration in 31 bits

/// Whether a stream's rate and scale are a rate at all.
template <class A = Machine>
constexpr typename A::Bool isRate(typename A::I32 rate, typename A::I32 scale) noexcept {
    return A::template guarded<Guard::kRateGiven>(rate != typename A::I32{0}) &&
           A::template guarded<Guard::kScaleGiven>(scale != typename A::I32{0});
}

/// The low 32 bits of a whole number within 64 bits. A rate of -2147483648 / -1 is the only one whose
/// quotient leaves 32 bits: it wraps.
template <class A = Machine>
typename A::I32 low32(typename A::Real wholeNumber) noexcept {
    return static_cast<typename A::I32>(A::truncated(wholeNumber));
}

/// Frames per second of a rate and a scale that are not 0: neither 0 nor beyond 2^31 by size.
template <class A = Machine>
typename A::Real exactRate(typename A::I32 rate, typename A::I32 scale) noexcept {
    return A::real(rate) / A::real(scale);
}

/// The terms of a rate that is `exact`, no larger than 2^31, and was given as rate / scale.
template <class A = Machine>
RateTerms<A> plainTerms(typename A::Real exact, typename A::I32 rate, typename A::I32 scale) noexcept {
    using Real = typename A::Real;
    using I32 = typename A::I32;
    const Real rounded = A::rounded(exact);
    const auto isWhole = A::size(rounded - exact) < Real{kRateTolerance};
    const auto isDropped = A::size((rounded * Real{1000.0}) / Real{1001.0} - exact) < Real{kRateTolerance};
    return A::choose(
        isWhole,
        [&] {
            return RateTerms<A>{low32<A>(rounded), I32{1}};
        },
        [&] {
            return A::choose(
                isDropped,
                [&] {
                    return RateTerms<A>{low32<A>(rounded * Real{1000.0}), I32{1001}};
                },
                [&] {
                    return RateTerms<A>{rate, scale};
                });
        });
}

/// The rate of a stream, with what lies within the tolerance of a whole number, or of one by 1000 / 1001,
/// taken for that. Neither is 0; the scale of the result is not, its rate is where `rate` is within the
/// tolerance of nothing.
template <class A = Machine>
RateTerms<A> plainRate(typename A::I32 rate, typename A::I32 scale) noexcept {
    return plainTerms<A>(exactRate<A>(rate, scale), rate, scale);
}

/// One step of Euclid's algorithm: what `a` leaves when divided by `b`, which is not 0. In 64 bits, since the
/// remainder of -2147483648 and -1 traps in 32.
template <class A = Machine>
constexpr typename A::I64 remainder(typename A::I64 a, typename A::I64 b) noexcept {
    return a % b;
}

/// The divisor that the algorithm ends with, made one to divide by: positive, and 1 of nothing.
template <class A = Machine>
constexpr typename A::I64 usableDivisor(typename A::I64 last) noexcept {
    using I64 = typename A::I64;
    return A::choose(
        A::template guarded<Guard::kDivisorNotZero>(last != I64{0}),
        [&] {
            return A::choose(
                A::template guarded<Guard::kDivisorPositive>(last > I64{0}), [&] { return last; },
                [&] { return I64{0} - last; });
        },
        [] { return I64{1}; });
}

/// A term of a rate, divided. A quotient of a 32-bit term and a positive divisor always fits.
template <class A = Machine>
constexpr typename A::I32 dividedTerm(typename A::I32 term, typename A::I64 divisor) noexcept {
    return static_cast<typename A::I32>(static_cast<typename A::I64>(term) / divisor);
}

/// The duration of `frameCount` frames in units of the rate. Wraps at 64 bits; a negative one counts as huge.
template <class A = Machine>
constexpr typename A::U64 durationOf(typename A::I32 denominator, typename A::I64 frameCount) noexcept {
    return static_cast<typename A::U64>(static_cast<typename A::I64>(denominator)) *
           static_cast<typename A::U64>(frameCount);
}

/// Whether the host can keep a duration.
template <class A = Machine>
constexpr typename A::Bool isHostDuration(typename A::U64 duration) noexcept {
    return A::template guarded<Guard::kDurationFits>(duration <= typename A::U64{kMaxHostDuration});
}

/// What the terms of a rate are multiplied with, for a duration that the host cannot keep: above 0, below 1.
template <class A = Machine>
typename A::Real durationFactor(typename A::U64 duration) noexcept {
    using Real = typename A::Real;
    return Real{static_cast<double>(kMaxHostDuration)} / A::real(duration);
}

/// A term of a rate, scaled down by such a factor, at least 1. A product with less than 1 stays inside 32
/// bits.
template <class A = Machine>
typename A::I32 scaledTerm(typename A::I32 term, typename A::Real factor) noexcept {
    using I32 = typename A::I32;
    const I32 scaled = low32<A>(A::real(term) * factor);
    return A::choose(
        A::template guarded<Guard::kLimitedTerm>(scaled >= I32{1}), [&] { return scaled; },
        [] { return I32{1}; });
}

/// A rate whose duration the host cannot keep, scaled down; at least 1 / 1.
template <class A = Machine>
RateTerms<A> scaledRate(typename A::I32 numerator, typename A::I32 denominator,
                        typename A::U64 duration) noexcept {
    const auto factor = durationFactor<A>(duration);
    return {scaledTerm<A>(numerator, factor), scaledTerm<A>(denominator, factor)};
}

}  // namespace orvantis
