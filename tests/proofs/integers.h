// The same statements with the machine's integers: a counter-example of the solver is played through the code
// that ships, and through the code without the guard.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <map>
#include <string>
#include <type_traits>

#include "numbers/machine.h"

namespace proofs {

using Model = std::map<std::string, std::uint64_t>;  // the bits of each input

/// What one run of a statement came to.
struct Replay {
    const Model* model = nullptr;
    bool assumed = true;   ///< the assumptions hold
    std::string violated;  ///< the first claim that does not
};
inline Replay* g_replay = nullptr;

template <orvantis::Guard kWithout>
struct Integers : orvantis::Machine {
    __extension__ using Wide = __int128;

    template <orvantis::Guard kGuard>
    static constexpr bool guarded(bool condition) {
        return kGuard == kWithout || condition;
    }
    static std::int64_t truncated(double value) {
        if (value < 9223372036854775808.0 && value >= -9223372036854775808.0) {
            return static_cast<std::int64_t>(value);
        }
        note("a double fits where it is converted to");
        return 0;
    }
    template <class Number>
    static Wide wide(Number value) {
        return static_cast<Wide>(value);
    }
    static Wide wideConstant(std::uint64_t value) { return static_cast<Wide>(value); }

    template <class Number>
    Number input(const char* name) {
        const std::uint64_t bits = g_replay->model->at(name);
        if constexpr (std::is_same_v<Number, double>) {
            return std::bit_cast<double>(bits);
        } else {
            return static_cast<Number>(bits);
        }
    }
    void assume(bool condition) { g_replay->assumed = g_replay->assumed && condition; }
    void claim(const char* what, bool condition) {
        if (!condition) {
            note(what);
        }
    }
    static constexpr bool kNeedsLaws = false;

 private:
    static void note(const char* what) {
        if (g_replay->violated.empty()) {
            g_replay->violated = what;
        }
    }
};

}  // namespace proofs
