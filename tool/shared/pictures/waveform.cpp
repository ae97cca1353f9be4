#include "tool/shared/pictures/waveform.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "tool/shared/base/number_text.h"
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

constexpr std::uint16_t kInk = 225;
constexpr std::int32_t kScaleWidth = 20;
constexpr std::int32_t kTick = 5;

void fill(Picture& picture, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
          const Colour& colour) {
    for (std::int32_t line = y; line < y + height; ++line) {
        std::uint16_t* to = picture.row(line) + std::ptrdiff_t{3} * x;
        for (std::int32_t i = 0; i < width; ++i, to += 3) {
            std::copy(colour.begin(), colour.end(), to);
        }
    }
}

// A line with five times, from 0 to the end.
void drawTimes(Picture& picture, std::int32_t left, std::int32_t top, std::int32_t width, double seconds) {
    constexpr std::int32_t kTimes = 4;
    fill(picture, left, top, width, 1, kAxis);
    for (std::int32_t i = 0; i <= kTimes; ++i) {
        const std::int32_t x = left + std::min(width * i / kTimes, width - 1);
        fill(picture, x, top, 1, kTick, kAxis);
        const std::string text = timeText(seconds * i / kTimes);
        const std::int32_t room = picture.width - kGap - textWidth(text);
        drawText(picture, std::min(x - (i == 0 ? 0 : textWidth(text) / 2), room), top + kTick + 2, text,
                 kInk);
    }
}

}  // namespace

Waveform::Waveform(std::uint32_t channels, std::uint64_t sampleFrames, std::int32_t width)
    : m_width(width), m_channels(channels, SampleRanges(sampleFrames, static_cast<std::size_t>(width))) {}

void Waveform::add(std::uint32_t channel, std::span<const float> samples) {
    m_channels[channel].add(samples);
}

void Waveform::skipTo(std::uint32_t channel, std::uint64_t position) noexcept {
    m_channels[channel].skipTo(position);
}

Picture Waveform::render(std::span<const std::string> labels, const WaveformText& text) const {
    const bool framed = !text.title.empty();
    const std::int32_t left = kGap + (framed ? kScaleWidth : 0);
    const std::int32_t head = kGap + (framed ? kTextHeight + kGap : 0);
    const std::int32_t pitch = kStrip + kTextHeight + kGap;
    const auto strips = std::max<std::int32_t>(static_cast<std::int32_t>(m_channels.size()), 1);
    Picture out;
    out.width = left + m_width + kGap;
    out.height = head + pitch * strips + (framed ? kTick + kTextHeight + kGap : 0);
    out.samples.resize(static_cast<std::size_t>(out.width) * static_cast<std::size_t>(out.height) * 3);
    fill(out, 0, 0, out.width, out.height, kGround);
    for (std::size_t i = 0; i < m_channels.size(); ++i) {
        const std::int32_t top = head + pitch * static_cast<std::int32_t>(i);
        const auto lineOf = [top](float value) {
            const float clamped = std::clamp(value, -1.0F, 1.0F);
            return top + static_cast<std::int32_t>(std::lround((1.0F - clamped) / 2.0F * (kStrip - 1)));
        };
        fill(out, left, top, m_width, kStrip, kStripGround);
        fill(out, left, lineOf(0.0F), m_width, 1, kAxis);
        for (std::int32_t x = 0; x < m_width; ++x) {
            const SampleRange& column = m_channels[i].columns()[static_cast<std::size_t>(x)];
            if (!column.any) {
                continue;
            }
            const bool beyond = column.low < -1.0F || column.high > 1.0F;
            const std::int32_t high = lineOf(column.high);
            fill(out, left + x, high, 1, lineOf(column.low) - high + 1, beyond ? kBeyond : kWave);
        }
        const std::string label = i < labels.size() ? labels[i] : std::to_string(i);
        drawText(out, left, top + kStrip + 2, fittedText(label, m_width), kInk);
        for (const auto& [value, name] : {std::pair{1.0F, "1"}, {0.0F, "0"}, {-1.0F, "-1"}}) {
            if (framed) {
                drawText(out, left - kGap - textWidth(name),
                         std::min(lineOf(value), top + kStrip - 8) - (value == 0.0F ? 4 : 0), name, kInk);
            }
        }
    }
    if (framed) {
        drawText(out, kGap, kGap, fittedText(text.title, out.width - 2 * kGap), kInk);
        drawTimes(out, left, head + pitch * strips, m_width, text.seconds);
    }
    return out;
}

}  // namespace simhost::tool
