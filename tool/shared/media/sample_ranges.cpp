#include "tool/shared/media/sample_ranges.h"

#include <algorithm>
#include <cmath>

namespace simhost::tool {

SampleRanges::SampleRanges(std::uint64_t samples, std::size_t columns)
    : m_samples(samples), m_columns(std::max<std::size_t>(columns, 1)) {}

void SampleRanges::add(std::span<const float> samples) {
    for (const float given : samples) {
        if (m_at >= m_samples) {
            return;
        }
        const float sample = std::isnan(given) ? 0.0F : given;
        const auto at = static_cast<double>(m_at) / static_cast<double>(m_samples);
        const auto column = static_cast<std::size_t>(at * static_cast<double>(m_columns.size()));
        SampleRange& range = m_columns[std::min(column, m_columns.size() - 1)];
        if (!range.any) {
            range.low = range.high = m_joins ? m_previous : sample;
            range.any = true;
        }
        range.low = std::min(range.low, sample);
        range.high = std::max(range.high, sample);
        m_previous = sample;
        m_joins = true;
        m_peak = std::max(m_peak, std::fabs(sample));
        m_beyond += std::fabs(sample) > 1.0F ? 1U : 0U;
        ++m_at;
    }
}

void SampleRanges::skipTo(std::uint64_t position) noexcept {
    m_at = position;
    m_joins = false;
}

}  // namespace simhost::tool
