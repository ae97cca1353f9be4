// What a parse found wrong with a file: lines of text, each with its place in the file. A parse that puts off
// what lies far away meets the problems in another order than it tells them in. Bounded, because a hostile
// file can have a problem every few bytes, and adding never fails: what cannot be noted is dropped.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orvantis {

/// In the order in which problems are told.
struct ProblemPlace {
    enum class Part : std::uint8_t {
        kStructure,   ///< the chunk tree
        kHeaders,     ///< what a usable file must have
        kStreamList,  ///< a strl list, or the index that it names; `ordinal` counts the lists
        kEnd,         ///< what is behind the headers
    };

    Part part;
    std::uint64_t ordinal = 0;

    // The check takes the 0 that the compiler compares with for a pointer.
    // NOLINTNEXTLINE(modernize-use-nullptr)
    friend auto operator<=>(const ProblemPlace&, const ProblemPlace&) = default;
};

class Problems {
 public:
    /// Notes `line` behind all that is noted of the same place.
    void add(ProblemPlace place, std::string_view line) noexcept;
    /// Whether a line of any length could still be noted.
    bool hasRoom() const noexcept;
    void clear() noexcept;
    bool empty() const noexcept { return m_text.empty(); }

    /// Sorts by place; does nothing when they came in order. Without the memory for it the order stays.
    void putInOrder() noexcept;
    /// The lines one behind the other, in order after putInOrder().
    const std::string& text() const noexcept { return m_text; }

 private:
    // Lines of one place that came one after the other: most files have none of them, hostile ones millions
    // of lines in a few runs.
    struct Run {
        ProblemPlace place;
        std::size_t begin;  // in m_text
        std::size_t end;
    };

    std::string m_text;
    std::vector<Run> m_runs;
};

}  // namespace orvantis
