#include "tool/shared/pictures/waveform.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "tool/shared/pictures/contact_sheet.h"

namespace simhost::tool {
namespace {

constexpr std::int32_t kStrip = 120;
constexpr std::int32_t kGap = 6;
using Colour = std::array<std::uint16_t, 3>;
constexpr Colour kGround = {40, 40, 40};
constexpr Colour kStripGround = {24, 24, 24};
constexpr Colour kAxis = {90, 90, 90};
constexpr Colour kWave = {120, 200, 255};
constexpr Colour kBeyond = {255, 80, 80};

void plot(Picture& picture, std::int32_t x, std::int32_t y, const Colour& colour) {
    std::copy(colour.begin(), colour.end(), picture.row(y) + std::ptrdiff_t{3} * x);
}

}  // namespace

Waveform::Waveform(std::uint32_t channels, std::uint64_t sampleFrames, std::int32_t width)
    : m_width(width), m_channels(channels, SampleRanges(sampleFrames, static_cast<std::size_t>(width))) {}

void Waveform::add(std::uint32_t channel, std::span<const float> samples) {
    m_channels[channel].add(samples);
}

Picture Waveform::render(std::span<const std::string> labels) const {
    const std::int32_t pitch = kStrip + kTextHeight + kGap;
    Picture out;
    out.width = m_width + 2 * kGap;
    out.height = kGap + pitch * std::max<std::int32_t>(static_cast<std::int32_t>(m_channels.size()), 1);
    out.samples.resize(static_cast<std::size_t>(out.width) * static_cast<std::size_t>(out.height) * 3);
    for (std::int32_t y = 0; y < out.height; ++y) {
        for (std::int32_t x = 0; x < out.width; ++x) {
            plot(out, x, y, kGround);
        }
    }
    for (std::size_t i = 0; i < m_channels.size(); ++i) {
        const std::int32_t top = kGap + pitch * static_cast<std::int32_t>(i);
        const auto lineOf = [top](float value) {
            const float clamped = std::clamp(value, -1.0F, 1.0F);
            return top + static_cast<std::int32_t>(std::lround((1.0F - clamped) / 2.0F * (kStrip - 1)));
        };
        for (std::int32_t x = 0; x < m_width; ++x) {
            for (std::int32_t y = top; y < top + kStrip; ++y) {
                plot(out, kGap + x, y, kStripGround);
            }
            plot(out, kGap + x, lineOf(0.0F), kAxis);
            const SampleRange& column = m_channels[i].columns()[static_cast<std::size_t>(x)];
            if (!column.any) {
                continue;
            }
            const bool beyond = column.low < -1.0F || column.high > 1.0F;
            for (std::int32_t y = lineOf(column.high); y <= lineOf(column.low); ++y) {
                plot(out, kGap + x, y, beyond ? kBeyond : kWave);
            }
        }
        drawText(out, kGap, top + kStrip + 2, i < labels.size() ? labels[i] : std::to_string(i), 225);
    }
    return out;
}

}  // namespace simhost::tool
