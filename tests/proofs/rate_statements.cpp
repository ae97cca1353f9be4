#include "tests/proofs/proof.h"
#include "video/rate_arithmetic.h"

namespace proofs {
namespace {

using namespace orvantis;  // NOLINT(google-build-using-namespace): the arithmetic that the statements are
                           // about

struct PlainRate {
    template <class A>
    static void state(A& a) {
        using I32 = typename A::I32;
        const auto rate = a.template input<I32>("rate");
        const auto scale = a.template input<I32>("scale");
        a.assume(isRate<A>(rate, scale));
        const auto terms = plainRate<A>(rate, scale);
        a.claim("the scale is not zero", terms.denominator != I32{0});
        a.claim("a rate is not made of nothing", rate != I32{0});
    }
};

// A step of Euclid's algorithm with a divisor that is not 0, as its loop asks. That the rest is smaller than
// the divisor, so that terms stay in 32 bits and the loop ends, is how the language defines it.
struct EuclidsStep {
    template <class A>
    static void state(A& a) {
        using I64 = typename A::I64;
        const auto first = static_cast<I64>(a.template input<typename A::I32>("a"));
        const auto second = static_cast<I64>(a.template input<typename A::I32>("b"));
        a.assume(second != I64{0});
        static_cast<void>(remainder<A>(first, second));
    }
};

struct DividedTerms {
    template <class A>
    static void state(A& a) {
        using I64 = typename A::I64;
        const auto term = a.template input<typename A::I32>("term");
        const auto last = a.template input<I64>("last");
        a.assume(last >= I64{-(std::int64_t{1} << 31)} && last <= I64{std::int64_t{1} << 31});
        const I64 divisor = usableDivisor<A>(last);
        a.claim("the divisor is positive", divisor > I64{0});
        const auto quotient = static_cast<I64>(term) / divisor;
        a.claim("the quotient fits 32 bits", static_cast<I64>(dividedTerm<A>(term, divisor)) == quotient);
    }
};

// The field of the host's record has 31 bits.
struct HostDuration {
    template <class A>
    static void state(A& a) {
        const auto frames = a.template input<typename A::U32>("frameCount");  // of a chunk list
        const auto denominator = a.template input<typename A::I32>("denominator");
        const auto count = static_cast<typename A::I64>(frames);
        const auto duration = durationOf<A>(denominator, count);
        a.assume(isHostDuration<A>(duration));
        // A product that stays in 64 bits, as it has to by itself, is the exact one.
        const auto exact = static_cast<typename A::I64>(denominator) * count;
        a.claim("the duration is the exact product", duration == static_cast<typename A::U64>(exact));
        a.claim("and fits", exact >= typename A::I64{0} && exact <= typename A::I64{2147483647});
    }
};

struct ScaledRate {
    template <class A>
    static void state(A& a) {
        using I32 = typename A::I32;
        const auto numerator = a.template input<I32>("numerator");
        const auto denominator = a.template input<I32>("denominator");
        const auto duration = a.template input<typename A::U64>("duration");
        a.assume(duration > typename A::U64{kMaxHostDuration});
        const auto scaled = scaledRate<A>(numerator, denominator, duration);
        a.claim("both terms are 1 at least", scaled.numerator >= I32{1} && scaled.denominator >= I32{1});
        a.claim("and no larger than they were",
                (scaled.numerator <= numerator || scaled.numerator == I32{1}) &&
                    (scaled.denominator <= denominator || scaled.denominator == I32{1}));
    }
};

}  // namespace

std::vector<Statement> rateStatements() {
    return {
        {"plainRate",
         "every conversion from double is in range; no scale of zero comes out",
         true,
         {PROOF(PlainRate, kBits), WITHOUT(PlainRate, kBits, kRateGiven),
          WITHOUT(PlainRate, kBits, kScaleGiven)}},
        {"remainder", "a step of Euclid's algorithm never traps", false, {PROOF(EuclidsStep, kBits)}},
        {"usableDivisor",
         "terms divided by it fit 32 bits",
         false,
         {PROOF(DividedTerms, kBits), WITHOUT(DividedTerms, kBits, kDivisorNotZero),
          WITHOUT(DividedTerms, kBits, kDivisorPositive)}},
        {"isHostDuration",
         "a duration that is told is exact, for every count of frames",
         true,
         {PROOF(HostDuration, kBits), WITHOUT(HostDuration, kBits, kDurationFits)}},
        {"scaledRate",
         "every conversion from double is in range; 1 / 1 at least, and no larger than before",
         true,
         {PROOF(ScaledRate, kBits), WITHOUT(ScaledRate, kBits, kLimitedNumerator),
          WITHOUT(ScaledRate, kBits, kLimitedDenominator)}},
    };
}

}  // namespace proofs
