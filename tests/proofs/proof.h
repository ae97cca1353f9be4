// A statement about the plug-in's arithmetic: proven as it stands, and refuted without each of its guards.
#pragma once

#include <string>
#include <vector>

#include "tests/proofs/bits.h"
#include "tests/proofs/integers.h"
#include "tests/proofs/whole.h"

namespace proofs {

/// What the solver is asked about one statement, with or without a guard.
struct Case {
    orvantis::Guard without;  ///< none: the statement itself
    const char* guardName;
    void (*ask)();          ///< fills the current question
    void (*replay)();       ///< plays the current model with the machine's integers
    void (*replayWhole)();  ///< the same with every guard in its place
};

struct Statement {
    const char* name;
    const char* text;
    bool slow;  ///< floating point or long products: minutes rather than seconds
    std::vector<Case> cases;
};

/// Which terms the solver gets: bit vectors as wide as the machine's numbers, or whole numbers that wrap
/// where those do, for what is made of products.
enum class Terms { kBits, kWhole };

namespace detail {
template <class State, orvantis::Guard kGuard, Terms kTerms>
void askFor() {
    if constexpr (kTerms == Terms::kBits) {
        Symbols<kGuard> family;
        State::state(family);
    } else {
        WholeNumbers<kGuard> family;
        State::state(family);
    }
}
template <class State, orvantis::Guard kGuard>
void replayFor() {
    Integers<kGuard> family;
    State::state(family);
}
template <class State, Terms kTerms, orvantis::Guard kGuard>
Case caseOf(const char* name) {
    return {kGuard, name, askFor<State, kGuard, kTerms>, replayFor<State, kGuard>,
            replayFor<State, orvantis::Guard::kNone>};
}
}  // namespace detail

std::vector<Statement> walkStatements();
std::vector<Statement> indexStatements();
std::vector<Statement> chunkStatements();
std::vector<Statement> sampleStatements();
std::vector<Statement> timeStatements();
std::vector<Statement> rateStatements();

/// A row of such a list. STATE is a type with `template <class A> static void state(A&)`.
#define PROOF(STATE, TERMS) proofs::detail::caseOf<STATE, proofs::Terms::TERMS, orvantis::Guard::kNone>("")
#define WITHOUT(STATE, TERMS, GUARD) \
    proofs::detail::caseOf<STATE, proofs::Terms::TERMS, orvantis::Guard::GUARD>(#GUARD)

}  // namespace proofs
