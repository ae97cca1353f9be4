// The family of numbers for statements about products and quotients, which are too long as bit vectors: whole
// numbers that wrap where the machine's unsigned numbers do. A product of two inputs is a number of which
// nothing is known but the laws of multiplication that a statement names (same() and monotony() below), and a
// quotient is what the definition of division says: dividend = quotient * divisor + rest. So what is proven
// holds for the real product, too, and the solver has linear arithmetic only. Counter-examples come from bit
// vectors, or are played with the machine's integers before they count.
#pragma once

#include <z3++.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>

#include "tests/proofs/bits.h"

namespace proofs {

inline z3::expr wholeConstant(std::uint64_t value) {
    return question().context.int_val(value);
}
/// 2 to the power of `bits`.
inline z3::expr powerOfTwo(unsigned bits) {
    z3::expr power = wholeConstant(1);
    for (unsigned done = 0; done < bits; done += 32) {
        power = power * wholeConstant(std::uint64_t{1} << std::min(32U, bits - done));
    }
    return power.simplify();
}
inline z3::expr freshWhole() {
    Question& asked = question();
    const std::string name = "helper" + std::to_string(asked.assumptions.size());
    return asked.context.int_const(name.c_str());
}

/// The same number wherever the same two terms are multiplied.
inline z3::expr product(const z3::expr& a, const z3::expr& b) {
    if (a.is_numeral() || b.is_numeral()) {
        return a * b;
    }
    Question& asked = question();
    const std::pair<unsigned, unsigned> key = std::minmax(a.id(), b.id());
    const auto known = asked.products.find(key);
    if (known != asked.products.end()) {
        return known->second;
    }
    const z3::expr result = freshWhole();
    asked.assumptions.push_back(z3::implies(a >= 0 && b >= 0, result >= 0));
    asked.products.insert({key, result});
    asked.kept.push_back(a);
    asked.kept.push_back(b);
    return result;
}

template <unsigned kWidth>
class Whole {
 public:
    explicit Whole(z3::expr term, unsigned zeroBits = 0) : m_term(std::move(term)), m_zeroBits(zeroBits) {}
    template <class Integer>
        requires std::is_integral_v<Integer>
    explicit Whole(Integer value) : m_term(wholeConstant(static_cast<std::uint64_t>(value))) {}
    template <unsigned kFrom>
    explicit Whole(const Whole<kFrom>& other)
        : m_term(kFrom <= kWidth ? other.term() : z3::mod(other.term(), powerOfTwo(kWidth))) {}

    const z3::expr& term() const { return m_term; }

    friend Whole operator+(const Whole& a, const Whole& b) {
        const z3::expr sum = a.m_term + b.m_term;
        return Whole(z3::ite(sum >= powerOfTwo(kWidth), sum - powerOfTwo(kWidth), sum));
    }
    friend Whole operator-(const Whole& a, const Whole& b) {
        const z3::expr difference = a.m_term - b.m_term;
        return Whole(z3::ite(difference < 0, difference + powerOfTwo(kWidth), difference));
    }
    friend Whole operator*(const Whole& a, const Whole& b) {
        // product = rounds * 2^width + result
        const z3::expr exact = product(a.m_term, b.m_term);
        Question& asked = question();
        const auto known = asked.wrapped.find({kWidth, exact.id()});
        if (known != asked.wrapped.end()) {
            return Whole(known->second);
        }
        const z3::expr result = freshWhole();
        asked.wrapped.insert({{kWidth, exact.id()}, result});
        asked.kept.push_back(exact);
        asked.assumptions.push_back(result >= 0 && result < powerOfTwo(kWidth));
        const z3::expr rounds = freshWhole();
        asked.assumptions.push_back(rounds >= 0 && exact == rounds * powerOfTwo(kWidth) + result);
        return Whole(result);
    }
    friend Whole operator/(const Whole& a, const Whole& b) { return Whole(divided(a, b).first); }
    friend Whole operator%(const Whole& a, const Whole& b) { return Whole(divided(a, b).second); }
    /// With a mask of the lowest bits.
    friend Whole operator&(const Whole& a, const Whole& mask) {
        return Whole(z3::mod(a.m_term, (mask.m_term + 1).simplify()));
    }
    /// Of numbers that have no bit in common: what was shifted up, and what fits below it.
    friend Whole operator|(const Whole& a, const Whole& b) {
        question().oblige("parts that are put together have no bit in common",
                          b.m_term < powerOfTwo(a.m_zeroBits));
        return Whole(a.m_term + b.m_term);
    }
    Whole operator~() const { return Whole(powerOfTwo(kWidth) - 1 - m_term); }
    Whole operator<<(unsigned count) const {
        const z3::expr moved = m_term * powerOfTwo(count);
        question().oblige("nothing is shifted out", moved < powerOfTwo(kWidth));
        return Whole(moved, count);
    }
    Whole operator>>(unsigned count) const { return Whole(m_term / powerOfTwo(count)); }
    friend Truth operator==(const Whole& a, const Whole& b) { return {a.m_term == b.m_term}; }
    friend Truth operator!=(const Whole& a, const Whole& b) { return {a.m_term != b.m_term}; }
    friend Truth operator<(const Whole& a, const Whole& b) { return {a.m_term < b.m_term}; }
    friend Truth operator>(const Whole& a, const Whole& b) { return b < a; }
    friend Truth operator<=(const Whole& a, const Whole& b) { return !(b < a); }
    friend Truth operator>=(const Whole& a, const Whole& b) { return !(a < b); }

 private:
    static std::pair<z3::expr, z3::expr> divided(const Whole& a, const Whole& b) {
        Question& asked = question();
        asked.oblige("nothing is divided by zero", b.m_term != 0);
        const auto known = asked.quotients.find({a.m_term.id(), b.m_term.id()});
        if (known != asked.quotients.end()) {
            return known->second;
        }
        const z3::expr quotient = freshWhole();
        asked.assumptions.push_back(quotient >= 0 && quotient < powerOfTwo(kWidth));
        const z3::expr rest = freshWhole();
        asked.assumptions.push_back(z3::implies(
            b.m_term != 0, a.m_term == product(quotient, b.m_term) + rest && rest >= 0 && rest < b.m_term));
        asked.quotients.insert({{a.m_term.id(), b.m_term.id()}, {quotient, rest}});
        asked.kept.push_back(a.m_term);  // so that no other term gets its number
        asked.kept.push_back(b.m_term);
        return {quotient, rest};
    }

    z3::expr m_term;
    unsigned m_zeroBits = 0;  // lowest bits that are known to be 0
};

/// Exact, without an end.
class Exact {
 public:
    explicit Exact(z3::expr term) : m_term(std::move(term)) {}
    const z3::expr& term() const { return m_term; }
    friend Exact operator+(const Exact& a, const Exact& b) { return Exact(a.m_term + b.m_term); }
    friend Exact operator-(const Exact& a, const Exact& b) { return Exact(a.m_term - b.m_term); }
    friend Exact operator*(const Exact& a, const Exact& b) { return Exact(product(a.m_term, b.m_term)); }
    friend Truth operator==(const Exact& a, const Exact& b) { return {a.m_term == b.m_term}; }
    friend Truth operator<(const Exact& a, const Exact& b) { return {a.m_term < b.m_term}; }
    friend Truth operator<=(const Exact& a, const Exact& b) { return {a.m_term <= b.m_term}; }
    friend Truth operator>=(const Exact& a, const Exact& b) { return {a.m_term >= b.m_term}; }

 private:
    z3::expr m_term;
};

template <orvantis::Guard kWithout>
struct WholeNumbers {
    using Bool = Truth;
    using U32 = Whole<32>;
    using U64 = Whole<64>;
    using Wide = Exact;

    template <orvantis::Guard kGuard>
    static Bool guarded(const Bool& condition) {
        return unlessTakenBack<kGuard, kWithout>(condition);
    }
    template <class Then, class Else>
    static auto choose(const Bool& condition, Then then, Else otherwise) {
        const auto [first, second] = bothResults(condition, then, otherwise);
        using Number = std::remove_cv_t<decltype(first)>;
        return Number(z3::ite(condition.term, first.term(), second.term()));
    }
    template <unsigned kWidth>
    static Wide wide(const Whole<kWidth>& value) {
        return Exact(value.term());
    }
    static Wide wideConstant(std::uint64_t value) { return Exact(wholeConstant(value)); }

    template <class Number>
    Number input(const char* name) {
        Question& asked = question();
        asked.inputs.emplace_back(name, asked.context.int_const(name));
        const z3::expr& term = asked.inputs.back().second;
        asked.assumptions.push_back(term >= 0 && term < powerOfTwo(widthOf(static_cast<Number*>(nullptr))));
        return Number(term);
    }
    void assume(const Bool& condition) { question().assumptions.push_back(condition.term); }
    void claim(const char* what, const Bool& condition) { question().oblige(what, condition.term); }

    static constexpr bool kNeedsLaws = true;
    /// x <= y and 0 <= z give x * z <= y * z, and so the other way round.
    static void monotony(const Wide& x, const Wide& y, const Wide& z) {
        const z3::expr xz = product(x.term(), z.term());
        const z3::expr yz = product(y.term(), z.term());
        Question& asked = question();
        asked.assumptions.push_back(z3::implies(z.term() >= 0 && x.term() <= y.term(), xz <= yz));
        asked.assumptions.push_back(z3::implies(z.term() >= 0 && y.term() <= x.term(), yz <= xz));
    }
    /// x = high * 2^32 + low gives x * z = high * z * 2^32 + low * z.
    static void distribution(const Wide& x, const Wide& high, const Wide& low, const Wide& z) {
        const z3::expr digit = powerOfTwo(32);
        question().assumptions.push_back(
            z3::implies(x.term() == high.term() * digit + low.term(),
                        product(x.term(), z.term()) ==
                            product(high.term(), z.term()) * digit + product(low.term(), z.term())));
    }

 private:
    template <unsigned kWidth>
    static unsigned widthOf(const Whole<kWidth>*) {
        return kWidth;
    }
};

}  // namespace proofs
