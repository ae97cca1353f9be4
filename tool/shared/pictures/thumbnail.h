// A picture made small. Pure function; any thread.
#pragma once

#include "tool/shared/pictures/picture.h"

namespace simhost::tool {

/// 8 bits a sample, at most `width` wide, same proportions and channels. Each new pixel is the mean of those
/// it covers, colours weighted by their alpha.
Picture thumbnail(const Picture& picture, std::int32_t width);

}  // namespace simhost::tool
