// A family of numbers for the plug-in's arithmetic (numbers/machine.h) whose values are terms of a solver:
// bit vectors as wide as the machine's numbers, and its floating point. What no input may do (divide by zero,
// leave the range of a signed type) is noted as an obligation of its own.
#pragma once

#include <z3++.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "numbers/machine.h"

namespace proofs {

/// One question to the solver: inputs, what is assumed of them, and what has to follow.
struct Question {
    z3::context context;
    std::vector<std::pair<std::string, z3::expr>> inputs;
    std::vector<z3::expr> assumptions;
    std::vector<z3::expr> path;  // conditions of the choices that the arithmetic is inside of
    std::vector<std::pair<std::string, z3::expr>> claims;
    // Of whole.h: products, and quotients with their rests, by the numbers of their terms.
    std::map<std::pair<unsigned, unsigned>, z3::expr> products;
    std::map<std::pair<unsigned, unsigned>, std::pair<z3::expr, z3::expr>> quotients;
    std::map<std::pair<unsigned, unsigned>, z3::expr> wrapped;  // by width and the exact product
    std::vector<z3::expr> kept;                                 // terms whose numbers stand there

    z3::expr here() {
        z3::expr all = context.bool_val(true);
        for (const z3::expr& condition : path) {
            all = all && condition;
        }
        return all;
    }
    void oblige(const char* what, const z3::expr& condition) {
        claims.emplace_back(what, z3::implies(here(), condition));
    }
};

/// The one that is being asked; one thread.
inline Question* g_question = nullptr;
inline Question& question() {
    return *g_question;
}

struct Truth {
    z3::expr term;
    Truth operator!() const { return {!term}; }
    friend Truth operator&&(const Truth& a, const Truth& b) { return {a.term && b.term}; }
    friend Truth operator||(const Truth& a, const Truth& b) { return {a.term || b.term}; }
    friend Truth operator!=(const Truth& a, const Truth& b) { return {a.term != b.term}; }
    friend Truth operator==(const Truth& a, const Truth& b) { return {a.term == b.term}; }
};

template <unsigned kWidth, bool kSigned>
class Bits {
 public:
    explicit Bits(z3::expr term) : m_term(std::move(term)) {}
    template <class Integer>
        requires std::is_integral_v<Integer>
    explicit Bits(Integer value)
        : m_term(question().context.bv_val(static_cast<std::uint64_t>(value), kWidth)) {
        static_assert(kWidth <= 64 || !std::is_signed_v<Integer>);
    }
    /// As a conversion of C++ does it: extended by the source's sign, or cut.
    template <unsigned kFrom, bool kFromSigned>
    explicit Bits(const Bits<kFrom, kFromSigned>& other) : m_term(converted(other)) {}

    const z3::expr& term() const { return m_term; }

    friend Bits operator+(const Bits& a, const Bits& b) {
        if constexpr (kSigned && kWidth <= 64) {
            question().oblige("a sum stays in its type", z3::bvadd_no_overflow(a.m_term, b.m_term, true) &&
                                                             z3::bvadd_no_underflow(a.m_term, b.m_term));
        }
        return Bits(a.m_term + b.m_term);
    }
    friend Bits operator-(const Bits& a, const Bits& b) {
        if constexpr (kSigned && kWidth <= 64) {
            question().oblige("a difference stays in its type",
                              z3::bvsub_no_overflow(a.m_term, b.m_term) &&
                                  z3::bvsub_no_underflow(a.m_term, b.m_term, true));
        }
        return Bits(a.m_term - b.m_term);
    }
    friend Bits operator*(const Bits& a, const Bits& b) {
        if constexpr (kSigned && kWidth <= 64) {
            question().oblige("a product stays in its type",
                              z3::bvmul_no_overflow(a.m_term, b.m_term, true) &&
                                  z3::bvmul_no_underflow(a.m_term, b.m_term));
        }
        return Bits(a.m_term * b.m_term);
    }
    friend Bits operator/(const Bits& a, const Bits& b) {
        obligeDivision(a, b);
        if constexpr (kSigned) {
            return Bits(a.m_term / b.m_term);
        }
        return Bits(z3::udiv(a.m_term, b.m_term));
    }
    friend Bits operator%(const Bits& a, const Bits& b) {
        obligeDivision(a, b);
        if constexpr (kSigned) {
            return Bits(z3::srem(a.m_term, b.m_term));
        }
        return Bits(z3::urem(a.m_term, b.m_term));
    }
    friend Bits operator&(const Bits& a, const Bits& b) { return Bits(a.m_term & b.m_term); }
    friend Bits operator|(const Bits& a, const Bits& b) { return Bits(a.m_term | b.m_term); }
    Bits operator~() const { return Bits(~m_term); }
    Bits operator<<(unsigned count) const { return Bits(z3::shl(m_term, static_cast<int>(count))); }
    Bits operator>>(unsigned count) const {
        static_assert(!kSigned);
        return Bits(z3::lshr(m_term, static_cast<int>(count)));
    }
    friend Truth operator==(const Bits& a, const Bits& b) { return {a.m_term == b.m_term}; }
    friend Truth operator!=(const Bits& a, const Bits& b) { return {a.m_term != b.m_term}; }
    friend Truth operator<(const Bits& a, const Bits& b) {
        return {kSigned ? z3::slt(a.m_term, b.m_term) : z3::ult(a.m_term, b.m_term)};
    }
    friend Truth operator>(const Bits& a, const Bits& b) { return b < a; }
    friend Truth operator<=(const Bits& a, const Bits& b) { return !(b < a); }
    friend Truth operator>=(const Bits& a, const Bits& b) { return !(a < b); }

 private:
    template <unsigned kFrom, bool kFromSigned>
    static z3::expr converted(const Bits<kFrom, kFromSigned>& other) {
        if constexpr (kFrom == kWidth) {
            return other.term();
        } else if constexpr (kFrom > kWidth) {
            return other.term().extract(kWidth - 1, 0);
        } else {
            constexpr unsigned kMore = kWidth - kFrom;
            return kFromSigned ? z3::sext(other.term(), kMore) : z3::zext(other.term(), kMore);
        }
    }
    static void obligeDivision(const Bits& a, const Bits& b) {
        question().oblige("nothing is divided by zero", b.m_term != Bits(0U).m_term);
        if constexpr (kSigned && kWidth <= 64) {
            const Bits lowest(std::uint64_t{1} << (kWidth - 1));
            question().oblige("a quotient stays in its type",
                              a.m_term != lowest.m_term || b.m_term != Bits(~std::uint64_t{0}).m_term);
        }
    }

    z3::expr m_term;
};

/// A double.
class Double {
 public:
    explicit Double(z3::expr term) : m_term(std::move(term)) {}
    explicit Double(double value) : m_term(question().context.fpa_val(value)) {}
    static z3::sort sort() { return question().context.fpa_sort(11, 53); }
    const z3::expr& term() const { return m_term; }

    // The context rounds to the nearest, as the machine does.
    friend Double operator-(const Double& a, const Double& b) { return Double(a.m_term - b.m_term); }
    friend Double operator*(const Double& a, const Double& b) { return Double(a.m_term * b.m_term); }
    friend Double operator/(const Double& a, const Double& b) { return Double(a.m_term / b.m_term); }
    friend Truth operator<(const Double& a, const Double& b) { return {a.m_term < b.m_term}; }

 private:
    z3::expr m_term;
};

/// A guard's condition, or "true" for the guard that a question takes back.
template <orvantis::Guard kGuard, orvantis::Guard kWithout>
Truth unlessTakenBack(const Truth& condition) {
    if constexpr (kGuard == kWithout) {
        return {question().context.bool_val(true)};
    }
    return condition;
}

/// What both sides of a choice give, each asked under the condition that leads there.
template <class Then, class Else>
auto bothResults(const Truth& condition, Then then, Else otherwise) {
    std::vector<z3::expr>& path = question().path;
    path.push_back(condition.term);
    auto first = then();
    path.back() = !condition.term;
    auto second = otherwise();
    path.pop_back();
    return std::pair(std::move(first), std::move(second));
}

/// `kWithout` is the guard that is taken back.
template <orvantis::Guard kWithout>
struct Symbols {
    using Bool = Truth;
    using U32 = Bits<32, false>;
    using U64 = Bits<64, false>;
    using I32 = Bits<32, true>;
    using I64 = Bits<64, true>;
    using Real = Double;
    /// Holds every result exactly: a product of 64 and 32 bits, with a sign.
    using Wide = Bits<104, true>;

    template <orvantis::Guard kGuard>
    static Bool guarded(const Bool& condition) {
        return unlessTakenBack<kGuard, kWithout>(condition);
    }

    template <class Then, class Else>
    static auto choose(const Bool& condition, Then then, Else otherwise) {
        const auto [first, second] = bothResults(condition, then, otherwise);
        return chosen(condition, first, second);
    }

    template <unsigned kWidth, bool kSigned>
    static Real real(const Bits<kWidth, kSigned>& value) {
        return Double(kSigned ? z3::sbv_to_fpa(value.term(), Double::sort())
                              : z3::ubv_to_fpa(value.term(), Double::sort()));
    }
    static I64 truncated(const Real& value) {
        // Also false for what is no number.
        const z3::expr limit = Double(9223372036854775808.0).term();
        question().oblige("a double fits where it is converted to",
                          value.term() < limit && value.term() >= -limit);
        return I64(z3::fpa_to_sbv(value.term(), 64));
    }
    static Real rounded(const Real& value) {
        z3::context& context = question().context;
        context.set_rounding_mode(z3::RNA);
        z3::expr result = z3::round_fpa_to_closest_integer(value.term());
        context.set_rounding_mode(z3::RNE);
        return Double(std::move(result));
    }
    static Real size(const Real& value) { return Double(z3::abs(value.term())); }

    template <class Number>
    static Wide wide(const Number& value) {
        return Wide(value);
    }
    static Wide wideConstant(std::uint64_t value) { return Wide(U64(value)); }

    /// An input of a statement. Of a double the solver is asked for the bits.
    template <class Number>
    Number input(const char* name) {
        if constexpr (std::is_same_v<Number, Double>) {
            question().inputs.emplace_back(name, question().context.bv_const(name, 64));
            return Double(question().inputs.back().second.mk_from_ieee_bv(Double::sort()));
        } else {
            return wholeInput<Number>(name);
        }
    }
    template <class Number>
    Number wholeInput(const char* name) {
        question().inputs.emplace_back(
            name, question().context.bv_const(name, widthOf(static_cast<Number*>(nullptr))));
        return Number(question().inputs.back().second);
    }
    void assume(const Bool& condition) { question().assumptions.push_back(condition.term); }
    void claim(const char* what, const Bool& condition) { question().oblige(what, condition.term); }
    /// Laws of multiplication that bit vectors know by themselves; see whole.h.
    static constexpr bool kNeedsLaws = false;

 private:
    template <unsigned kWidth, bool kSigned>
    static unsigned widthOf(const Bits<kWidth, kSigned>*) {
        return kWidth;
    }
    template <unsigned kWidth, bool kSigned>
    static Bits<kWidth, kSigned> chosen(const Bool& condition, const Bits<kWidth, kSigned>& a,
                                        const Bits<kWidth, kSigned>& b) {
        return Bits<kWidth, kSigned>(z3::ite(condition.term, a.term(), b.term()));
    }
    template <class Terms>
    static Terms chosen(const Bool& condition, const Terms& a, const Terms& b) {
        return {chosen(condition, a.numerator, b.numerator), chosen(condition, a.denominator, b.denominator)};
    }
};

}  // namespace proofs
