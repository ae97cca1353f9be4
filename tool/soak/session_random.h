// The lot of one session: numbers that depend on the run's seed and the session's number alone, the same on
// every system. One owner; one thread.
#pragma once

#include <cstdint>
#include <span>

namespace simhost::tool {

class SessionRandom {
 public:
    SessionRandom(std::uint64_t seed, std::uint64_t number) noexcept : m_state(seed) {
        m_state = next() ^ number;
        (void)next();
    }

    /// SplitMix64 (Steele, Lea, Flood 2014).
    std::uint64_t next() noexcept {
        m_state += 0x9E3779B97F4A7C15u;
        std::uint64_t mixed = m_state;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9u;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBu;
        return mixed ^ (mixed >> 31);
    }

    /// 0 to `end` - 1; 0 for an `end` of 0.
    std::uint64_t below(std::uint64_t end) noexcept { return end == 0 ? 0 : next() % end; }
    /// One time in so many.
    bool oneIn(std::uint64_t times) noexcept { return below(times) == 0; }
    template <class Value, std::size_t count>
    Value oneOf(const Value (&values)[count]) noexcept {
        return values[below(count)];
    }

 private:
    std::uint64_t m_state;
};

}  // namespace simhost::tool
