// A picture made small. Pure function; any thread.
#pragma once

#include <cstdint>
#include <limits>

#include "tool/shared/pictures/picture.h"

namespace simhost::tool {

/// Pixels of frames that one page or sheet asks for in all: about 48 frames of 1920 × 1080. To make more
/// takes more than a moment.
inline constexpr std::uint64_t kMostShownPixels = 100'000'000;

/// How many frames of a size have together no more than kMostShownPixels; at least one.
std::uint64_t framesWorthShowing(std::int32_t width, std::int32_t height) noexcept;

/// Which rows and pixels of a frame `toPicture` has to take for a thumbnail of at most this size: all of
/// them, unless each pixel of the thumbnail then still covers 8 × 8 of those taken.
std::int32_t thumbnailStep(std::int32_t frameWidth, std::int32_t frameHeight, std::int32_t width,
                           std::int32_t height) noexcept;

/// 8 bits a sample, at most `width` wide and `height` high, same channels, and same proportions as far as at
/// least one row and column remain. Each new pixel is the mean of those it covers, colours weighted by alpha.
Picture thumbnail(const Picture& picture, std::int32_t width,
                  std::int32_t height = std::numeric_limits<std::int32_t>::max());

}  // namespace simhost::tool
