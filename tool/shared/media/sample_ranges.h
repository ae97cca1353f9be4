// The range of one channel's samples in each of so many columns: what every drawing of a sound starts from.
// Not thread-safe.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace simhost::tool {

struct SampleRange {
    float low = 0.0F;
    float high = 0.0F;
    bool any = false;  ///< a sample fell into it
};

class SampleRanges {
 public:
    /// `samples` in all, spread over `columns`, of which there is at least one.
    SampleRanges(std::uint64_t samples, std::size_t columns);

    /// The next samples, in order; what is behind the end does not count. What is no number counts as 0. A
    /// column begins with the last sample of the one before, so that what is drawn of them joins.
    void add(std::span<const float> samples);
    /// The next samples are those from `position` on; what lies between is not known, and nothing joins.
    void skipTo(std::uint64_t position) noexcept;

    std::span<const SampleRange> columns() const noexcept { return m_columns; }
    /// The largest size of a sample.
    float peak() const noexcept { return m_peak; }
    /// How many samples are beyond full scale.
    std::uint64_t beyond() const noexcept { return m_beyond; }

 private:
    std::uint64_t m_samples;
    std::vector<SampleRange> m_columns;
    std::uint64_t m_at = 0;
    bool m_joins = false;  // m_previous is the sample before
    float m_previous = 0.0F;
    float m_peak = 0.0F;
    std::uint64_t m_beyond = 0;
};

}  // namespace simhost::tool
