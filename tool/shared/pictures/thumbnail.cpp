#include "tool/shared/pictures/thumbnail.h"

#include <algorithm>
#include <array>

namespace simhost::tool {
namespace {

std::uint16_t rounded(std::uint64_t dividend, std::uint64_t divisor) {
    return static_cast<std::uint16_t>((dividend + divisor / 2) / divisor);
}

// The mean of the pixels [x0, x1) × [y0, y1).
void average(const Picture& from, std::int32_t x0, std::int32_t x1, std::int32_t y0, std::int32_t y1,
             std::uint16_t* out) {
    const auto channels = static_cast<std::size_t>(from.channels);
    const std::uint64_t most = from.bits == 8 ? 255 : 65535;
    std::array<std::uint64_t, 3> colour{};
    std::uint64_t weight = 0;
    std::uint64_t count = 0;
    for (std::int32_t y = y0; y < y1; ++y) {
        const std::uint16_t* pixel = from.row(y) + static_cast<std::size_t>(x0) * channels;
        for (std::int32_t x = x0; x < x1; ++x, pixel += channels) {
            const std::uint64_t alpha = channels == 4 ? pixel[3] : most;
            for (std::size_t i = 0; i < 3; ++i) {
                colour[i] += pixel[i] * alpha;
            }
            weight += alpha;
            ++count;
        }
    }
    for (std::size_t i = 0; i < 3; ++i) {
        out[i] = weight == 0 ? std::uint16_t{0} : rounded(colour[i] * 255, weight * most);
    }
    if (channels == 4) {
        out[3] = rounded(weight * 255, count * most);
    }
}

struct Size {
    std::int32_t width;
    std::int32_t height;
};

Size thumbnailSize(std::int32_t fromWidth, std::int32_t fromHeight, std::int32_t width, std::int32_t height) {
    if (fromHeight > height) {
        width = std::min(width, static_cast<std::int32_t>(std::int64_t{fromWidth} * height / fromHeight));
    }
    Size out{std::max(std::min(width, fromWidth), 1), 1};
    out.height = static_cast<std::int32_t>(std::max<std::int64_t>(
        (std::int64_t{fromHeight} * out.width + fromWidth / 2) / std::max(fromWidth, 1), 1));
    out.height = std::min(out.height, std::max(height, 1));
    return out;
}

}  // namespace

std::uint64_t framesWorthShowing(std::int32_t width, std::int32_t height) noexcept {
    const std::uint64_t pixels = std::uint64_t{static_cast<std::uint32_t>(std::max(width, 1))} *
                                 static_cast<std::uint32_t>(std::max(height, 1));
    return std::max<std::uint64_t>(kMostShownPixels / pixels, 1);
}

std::int32_t thumbnailStep(std::int32_t frameWidth, std::int32_t frameHeight, std::int32_t width,
                           std::int32_t height) noexcept {
    constexpr std::int64_t kCovered = 8;
    const Size small = thumbnailSize(frameWidth, frameHeight, width, height);
    return static_cast<std::int32_t>(std::max<std::int64_t>(
        std::min(frameWidth / (kCovered * small.width), frameHeight / (kCovered * small.height)), 1));
}

Picture thumbnail(const Picture& picture, std::int32_t width, std::int32_t height) {
    Picture out;
    const Size size = thumbnailSize(picture.width, picture.height, width, height);
    out.width = size.width;
    out.height = size.height;
    out.channels = picture.channels;
    out.bits = 8;
    out.samples.resize(static_cast<std::size_t>(out.width) * static_cast<std::size_t>(out.height) *
                       static_cast<std::size_t>(out.channels));
    // A new pixel covers at least one old one, also where a clip is only a few pixels wide.
    const auto edge = [](std::int32_t at, std::int32_t from, std::int32_t to) {
        return static_cast<std::int32_t>(std::int64_t{at} * from / to);
    };
    for (std::int32_t y = 0; y < out.height; ++y) {
        const std::int32_t y0 = edge(y, picture.height, out.height);
        const std::int32_t y1 = std::max(edge(y + 1, picture.height, out.height), y0 + 1);
        for (std::int32_t x = 0; x < out.width; ++x) {
            const std::int32_t x0 = edge(x, picture.width, out.width);
            const std::int32_t x1 = std::max(edge(x + 1, picture.width, out.width), x0 + 1);
            average(picture, x0, x1, y0, y1,
                    out.row(y) + static_cast<std::size_t>(x) * static_cast<std::size_t>(out.channels));
        }
    }
    return out;
}

}  // namespace simhost::tool
