#include "tests/proofs/proof.h"
#include "video/rate_arithmetic.h"

namespace proofs {
namespace {

using namespace orvantis;  // NOLINT(google-build-using-namespace): the arithmetic that the statements are
                           // about

// Two halves, since the solver has the quotient of two inputs in doubles, or what becomes of any double, but
// not both: plainRate is the second half of the first, and what is claimed there is assumed here.
struct ExactRate {
    template <class A>
    static void state(A& a) {
        using I32 = typename A::I32;
        using Real = typename A::Real;
        const auto rate = a.template input<I32>("rate");
        const auto scale = a.template input<I32>("scale");
        a.assume(isRate<A>(rate, scale));
        const auto exact = A::size(exactRate<A>(rate, scale));
        a.claim("a rate is not made of nothing", Real{0.0} < exact);
        a.claim("no larger than 2^31", !(Real{2147483648.0} < exact) && exact < Real{2147483649.0});
    }
};

// Where to look for the counter-example: a scale of nothing spares the solver the division.
struct ExactRateOfNothing {
    template <class A>
    static void state(A& a) {
        a.assume(a.template input<typename A::I32>("scale") == typename A::I32{0});
        ExactRate::state(a);
    }
};

struct PlainTerms {
    template <class A>
    static void state(A& a) {
        using I32 = typename A::I32;
        using Real = typename A::Real;
        const auto exact = a.template input<Real>("exact");
        const auto rate = a.template input<I32>("rate");
        const auto scale = a.template input<I32>("scale");
        a.assume(A::size(exact) < Real{2147483649.0});
        a.assume(scale != I32{0});
        const auto terms = plainTerms<A>(exact, rate, scale);
        a.claim("the scale is not zero", terms.denominator != I32{0});
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

// Two halves like those of plainRate: scaledRate is the second, for both terms, of the first.
struct DurationFactor {
    template <class A>
    static void state(A& a) {
        using Real = typename A::Real;
        const auto duration = a.template input<typename A::U64>("duration");
        a.assume(!isHostDuration<A>(duration));
        const auto factor = durationFactor<A>(duration);
        a.claim("above 0 and below 1", Real{0.0} < factor && factor < Real{1.0});
    }
};

struct ScaledTerm {
    template <class A>
    static void state(A& a) {
        using I32 = typename A::I32;
        using Real = typename A::Real;
        const auto term = a.template input<I32>("term");
        const auto factor = a.template input<Real>("factor");
        a.assume(Real{0.0} < factor && factor < Real{1.0});
        const auto scaled = scaledTerm<A>(term, factor);
        a.claim("at least 1", scaled >= I32{1});
        a.claim("no larger than it was", scaled <= term || scaled == I32{1});
    }
};

}  // namespace

std::vector<Statement> rateStatements() {
    return {
        {"exactRate",
         "the quotient is neither 0 nor larger than 2^31",
         true,
         {PROOF(ExactRate, kBits), WITHOUT(ExactRate, kBits, kRateGiven),
          WITHOUT(ExactRateOfNothing, kBits, kScaleGiven)}},
        {"plainTerms",
         "every conversion from double is in range; no scale of zero comes out",
         true,
         {PROOF(PlainTerms, kBits)}},
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
        {"durationFactor",
         "above 0 and below 1 for every duration that the host cannot keep",
         true,
         {PROOF(DurationFactor, kBits)}},
        {"scaledTerm",
         "every conversion from double is in range; 1 at least, and no larger than before",
         true,
         {PROOF(ScaledTerm, kBits), WITHOUT(ScaledTerm, kBits, kLimitedTerm)}},
    };
}

}  // namespace proofs
