#include "tests/proofs/proof.h"
#include "video/frame_time.h"

namespace proofs {
namespace {

using namespace orvantis;  // NOLINT(google-build-using-namespace): the arithmetic that the statements are
                           // about

struct Magnitude {
    template <class A>
    static void state(A& a) {
        const auto value = a.template input<typename A::I64>("value");
        const auto size = A::wide(magnitude<A>(value));
        const auto exact = A::wide(value);
        a.claim("the absolute value", (exact < A::wideConstant(0) && size == A::wideConstant(0) - exact) ||
                                          (exact >= A::wideConstant(0) && size == exact));
    }
};

struct MultiplyDivide {
    template <class A>
    static void state(A& a) {
        stateFor(a, a.template input<typename A::U32>("divisor"));
    }
    template <class A>
    static void stateFor(A& a, typename A::U32 divisor) {
        using U64 = typename A::U64;
        const auto factor = a.template input<typename A::U32>("factor");
        const auto value = a.template input<U64>("value");
        a.assume(divisor != typename A::U32{0});
        a.assume(value <= U64{std::uint64_t{1} << 63});  // the size of a signed number
        const auto quotient = A::wide(multiplyDivide<A>(factor, value, divisor));
        const auto by = A::wide(divisor);
        const auto product = A::wide(factor) * A::wide(value);
        const auto largest = A::wideConstant(~std::uint64_t{0});
        if constexpr (A::kNeedsLaws) {
            // The digits of the long division, by the same terms as there.
            const auto mask = U64{0xFFFFFFFF};
            const U64 f = static_cast<U64>(factor);
            const U64 d = static_cast<U64>(divisor);
            const auto digit = A::wideConstant(std::uint64_t{1} << 32);
            A::monotony(A::wide(f), A::wide(mask), A::wide(value & mask));
            A::monotony(A::wide(f), A::wide(mask), A::wide(value >> 32));
            A::distribution(A::wide(value), A::wide(value >> 32), A::wide(value & mask), A::wide(f));
            const U64 low = f * (value & mask);
            const U64 high = f * (value >> 32) + (low >> 32);
            const U64 quotientHigh = high / d;
            A::monotony(A::wide(quotientHigh), digit, by);
            A::monotony(A::wide(quotientHigh), A::wide(mask), by);
            A::choose(
                quotientHigh <= mask,
                [&] {
                    const U64 quotientLow = ((high % d) << 32 | (low & mask)) / d;
                    A::monotony(A::wide(quotientLow), digit, by);
                    A::monotony(A::wide(quotientLow), A::wide(mask), by);
                    A::distribution(quotient, A::wide(quotientHigh), A::wide(quotientLow), by);
                    return quotientLow;
                },
                [&] { return mask; });
            A::monotony(quotient, largest, by);
        }
        a.claim("not above the quotient", quotient * by <= product);
        a.claim("and less than one below it, or the largest number",
                product < quotient * by + by || (quotient == largest && quotient * by + by <= product));
    }
};

// Where to look for the counter-example: the largest value and a divisor of 1 show it, and
// spare the solver a division.
struct MultiplyDivideByOne {
    template <class A>
    static void state(A& a) {
        a.assume(a.template input<typename A::U64>("value") == typename A::U64{std::uint64_t{1} << 63});
        MultiplyDivide::stateFor(a, typename A::U32{1});
    }
};

// Everything but the exact quotient: no trap, no overflow, and kNoFrame where there is none. Two halves,
// since the way to a length of no tick leads through a long product and a long division: frameIndex is the
// second half of ticksPerFrame, which is multiplyDivide of sizes.
struct FrameIndex {
    template <class A>
    static void state(A& a) {
        using I32 = typename A::I32;
        using I64 = typename A::I64;
        const auto time = a.template input<I64>("frameTime");
        const auto numerator = a.template input<I32>("numerator");
        const auto denominator = a.template input<I32>("denominator");
        const auto ticks = a.template input<I64>("ticksPerSecond");
        const auto index = frameIndex<A>(time, numerator, denominator, ticks);
        a.claim("no frame without a rate", numerator != I32{0} || index == typename A::U32{kNoFrame});
    }
};

struct FrameOfAnyLength {
    template <class A>
    static void state(A& a) {
        using U32 = typename A::U32;
        using U64 = typename A::U64;
        const auto time = a.template input<typename A::I64>("frameTime");
        const auto ticks = a.template input<U64>("ticksPerFrame");
        const auto backwards = a.template input<U32>("backwards");
        const U32 index = frameOfTime<A>(time, ticks, backwards != U32{0});
        a.claim("no frame that lasts no tick", ticks != U64{0} || index == U32{kNoFrame});
    }
};

// The last division and the sign, for any length of a frame.
struct FrameOfTime {
    template <class A>
    static void state(A& a) {
        using U64 = typename A::U64;
        const auto size = a.template input<U64>("sizeOfTime");
        const auto ticks = a.template input<U64>("ticksPerFrame");
        a.assume(ticks != U64{0});
        const U64 index = size / ticks;
        a.claim("the time lies in the frame, which begins at or ahead of it",
                A::wide(index) * A::wide(ticks) <= A::wide(size) &&
                    A::wide(size) < A::wide(index) * A::wide(ticks) + A::wide(ticks));
    }
};

}  // namespace

std::vector<Statement> timeStatements() {
    return {
        {"magnitude", "the absolute value of every signed number", false, {PROOF(Magnitude, kBits)}},
        {"multiplyDivide",
         "factor * value / divisor as in 96 bits, or 2^64 - 1 where that is exceeded",
         false,
         {PROOF(MultiplyDivide, kWhole), WITHOUT(MultiplyDivideByOne, kBits, kQuotientFits)}},
        {"frameIndex",
         "never divides by zero; no frame where there is no rate",
         true,
         {PROOF(FrameIndex, kBits), WITHOUT(FrameIndex, kBits, kRateHasNumerator)}},
        {"frameOfTime",
         "never divides by zero; no frame where a frame lasts no tick",
         false,
         {PROOF(FrameOfAnyLength, kBits), WITHOUT(FrameOfAnyLength, kBits, kFrameLastsATick)}},
        {"frameOfTime, the division",
         "the time lies in the frame that is told",
         false,
         {PROOF(FrameOfTime, kWhole)}},
    };
}

}  // namespace proofs
