// A frame as a picture for the eye: RGB or RGBA, top row first, 8 or 16 bits a sample. Pure functions; any
// thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "simhost/frame.h"

namespace simhost::tool {

struct Picture {
    std::int32_t width = 0;
    std::int32_t height = 0;
    int channels = 3;                    ///< 3 RGB, 4 RGBA with straight alpha
    int bits = 8;                        ///< 8: samples 0 to 255; 16: samples 0 to 65535
    std::vector<std::uint16_t> samples;  ///< height × width × channels

    std::uint16_t* row(std::int32_t y) noexcept {
        return samples.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width) *
                                    static_cast<unsigned>(channels);
    }
    const std::uint16_t* row(std::int32_t y) const noexcept { return const_cast<Picture*>(this)->row(y); }
};

/// True for the formats that toPicture can show.
bool canShow(std::uint32_t pixelFormat) noexcept;

/// YUV becomes RGB by the format's own matrix (Rec.601 or 709) and limited range; 4:2:2 chroma is
/// interpolated from its place at the even pixels. Formats of 10 and 16 bits give 16-bit pictures, the others
/// 8-bit ones. The format must be one that can be shown. `step` above 1 takes every such row and, of these,
/// every such pixel, so that a frame too large for its purpose costs neither its time nor its memory.
Picture toPicture(const Frame& frame, std::int32_t step = 1);

}  // namespace simhost::tool
