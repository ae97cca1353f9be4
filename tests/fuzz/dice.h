// Random choices that depend on nothing but the seed, on every machine.
#pragma once

#include <cstddef>
#include <cstdint>

namespace fuzz {

class Dice {
 public:
    explicit Dice(std::uint64_t seed) : m_state(seed) {}

    std::uint64_t next() {  // SplitMix64
        m_state += 0x9E3779B97F4A7C15;
        std::uint64_t bits = m_state;
        bits = (bits ^ bits >> 30) * 0xBF58476D1CE4E5B9;
        bits = (bits ^ bits >> 27) * 0x94D049BB133111EB;
        return bits ^ bits >> 31;
    }
    /// 0 to count - 1; 0 of none.
    std::size_t below(std::size_t count) { return count == 0 ? 0 : static_cast<std::size_t>(next() % count); }
    bool oneIn(std::size_t count) { return below(count) == 0; }
    template <class Table>
    const auto& of(const Table& table) {
        return table[below(table.size())];
    }

 private:
    std::uint64_t m_state;
};

}  // namespace fuzz
