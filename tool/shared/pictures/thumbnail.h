// A picture made small. Pure function; any thread.
#pragma once

#include <cstdint>
#include <limits>

#include "tool/shared/pictures/picture.h"

namespace simhost::tool {

/// 8 bits a sample, at most `width` wide and `height` high, same channels, and same proportions as far as at
/// least one row and column remain. Each new pixel is the mean of those it covers, colours weighted by alpha.
Picture thumbnail(const Picture& picture, std::int32_t width,
                  std::int32_t height = std::numeric_limits<std::int32_t>::max());

}  // namespace simhost::tool
