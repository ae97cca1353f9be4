// The picture of a sound: for each channel a strip with the range of samples in every column. Not
// thread-safe.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "tool/shared/media/sample_ranges.h"
#include "tool/shared/pictures/picture.h"

namespace simhost::tool {

/// What stands around the strips; without `title` nothing does.
struct WaveformText {
    std::string title;
    double seconds = 0;  ///< that the strips span
};

class Waveform {
 public:
    /// `sampleFrames` in all, spread over `width` columns, of which there are fewer than kMostPictureWidth.
    Waveform(std::uint32_t channels, std::uint64_t sampleFrames, std::int32_t width = 1200);

    /// The next samples of a channel, in order.
    void add(std::uint32_t channel, std::span<const float> samples);
    /// The next samples of a channel are those from `position` on; what lies between is not drawn.
    void skipTo(std::uint32_t channel, std::uint64_t position) noexcept;
    std::uint32_t columns() const noexcept { return static_cast<std::uint32_t>(m_width); }
    /// 8 bits RGB. Full scale fills a strip; what goes beyond is cut and marked red. `labels` may be shorter
    /// than the list of channels.
    Picture render(std::span<const std::string> labels, const WaveformText& text = {}) const;

 private:
    std::int32_t m_width;
    std::vector<SampleRanges> m_channels;
};

}  // namespace simhost::tool
