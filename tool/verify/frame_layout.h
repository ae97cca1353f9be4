// The bytes of a frame that are hashed. A delivered frame is put back into the layout in which the picture is
// coded, as ffmpeg stores its pixel format of the same name: planes G B R (A) or Y U V (A), rows from the top
// without padding, samples of more than 8 bits as 16-bit little-endian words. So the hash does not depend on
// which of its layouts the host asks for, and is that of ffmpeg's own decoding of the same pictures. Pure
// functions; any thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "simhost/frame.h"

namespace simhost::tool {

struct FrameLayout {
    std::string name;             ///< ffmpeg's, "yuv422p10le"; the host's for a frame hashed as delivered
    std::uint32_t delivered = 0;  ///< the host format to ask for
    bool asDelivered = false;     ///< no layout of the host holds every bit of such a picture
    unsigned planes = 3;
    bool rgb = false;
    unsigned bits = 8;
    unsigned shiftX = 0;  ///< of chroma
    unsigned shiftY = 0;
};

/// Where the pictures of a coded type ("O8Y2") that is offered in these formats are hashed. `offered` has one
/// format at least.
FrameLayout frameLayout(std::string_view codedType, const std::vector<std::uint32_t>& offered);

/// The frame's bytes in the layout, in the place of what `out` held. The frame is of `layout.delivered`.
void layOut(const Frame& frame, const FrameLayout& layout, std::vector<std::uint8_t>& out);

}  // namespace simhost::tool
