#include "tests/integration/plugin_clips.h"

namespace clips {

using orvantis::test::AviBuilder;
using orvantis::test::Bytes;

namespace {

// Distinct for each place of each of the first pictures, and inside the limited range.
std::uint8_t luma(std::uint32_t index, std::int32_t x, std::int32_t y) {
    return static_cast<std::uint8_t>(16 + (static_cast<std::uint32_t>(y * kWidth + x) + 67 * index) % 200);
}
std::uint8_t blueness(std::uint32_t index, std::int32_t pair, std::int32_t y) {
    return static_cast<std::uint8_t>(16 + (static_cast<std::uint32_t>(y * 8 + pair) + 41 * index) % 100);
}
std::uint8_t redness(std::uint32_t index, std::int32_t pair, std::int32_t y) {
    return static_cast<std::uint8_t>(120 + (static_cast<std::uint32_t>(y * 8 + pair) + 29 * index) % 100);
}

}  // namespace

Bytes codedPicture(std::uint32_t index) {
    Bytes out;
    for (std::int32_t y = 0; y < kHeight; ++y) {
        for (std::int32_t x = 0; x < kWidth; ++x) {
            out.push_back(luma(index, x, y));
        }
    }
    for (std::int32_t y = 0; y < kHeight; ++y) {
        for (std::int32_t pair = 0; pair < kWidth / 2; ++pair) {
            out.push_back(blueness(index, pair, y));
        }
    }
    for (std::int32_t y = 0; y < kHeight; ++y) {
        for (std::int32_t pair = 0; pair < kWidth / 2; ++pair) {
            out.push_back(redness(index, pair, y));
        }
    }
    return out;
}

std::vector<std::uint8_t> yuy2Picture(std::uint32_t index) {
    std::vector<std::uint8_t> out;
    for (std::int32_t y = 0; y < kHeight; ++y) {
        for (std::int32_t pair = 0; pair < kWidth / 2; ++pair) {
            out.push_back(luma(index, 2 * pair, y));
            out.push_back(blueness(index, pair, y));
            out.push_back(luma(index, 2 * pair + 1, y));
            out.push_back(redness(index, pair, y));
        }
    }
    return out;
}

Bytes codedSound(std::uint32_t first, std::uint32_t count) {
    orvantis::test::RiffBuilder out;
    for (std::uint32_t n = first; n < first + count; ++n) {
        out.u16(static_cast<std::uint16_t>(n)).u16(static_cast<std::uint16_t>(0 - n));
    }
    return out.take();
}

AviBuilder builder(const Shape& shape) {
    AviBuilder avi;
    avi.addStream(orvantis::test::videoStream(shape.tag, kWidth, kHeight, shape.rate, shape.scale));
    for (std::uint32_t i = 0; i < shape.audioStreams; ++i) {
        avi.addStream(orvantis::test::pcmStream(2, kSampleRate, 16));
    }
    for (std::uint32_t frame = 0; frame < shape.frames; ++frame) {
        avi.addChunk(0, codedPicture(frame));
        for (std::uint32_t i = 1; i <= shape.audioStreams; ++i) {
            avi.addChunk(i, codedSound(frame * kSamplesPerFrame, kSamplesPerFrame));
        }
    }
    return avi.openDml(shape.openDml);
}

}  // namespace clips
