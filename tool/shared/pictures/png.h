// PNG files of 8 and 16 bits a sample, RGB and RGBA. Pure functions; any thread.
#pragma once

#include <cstdint>
#include <vector>

#include "tool/shared/pictures/picture.h"

namespace simhost::tool {

/// The bytes of a PNG file. Throws std::runtime_error when the picture is too large for one.
std::vector<std::uint8_t> encodePng(const Picture& picture);

}  // namespace simhost::tool
