// Which frames a command works on: "5", "2:9", "0:100:10" or "all". Pure functions; any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace simhost::tool {

struct FrameRange {
    std::uint32_t first = 0;
    std::optional<std::uint32_t> last;  ///< none: the clip's last frame
    std::uint32_t step = 1;
};

/// FIRST[:LAST[:STEP]] with LAST included, an empty LAST meaning the end of the clip; "all". Nothing for
/// anything else.
std::optional<FrameRange> parseFrameRange(std::string_view text);

/// What there is to say to a range that goes beyond the end of a clip of `count` frames: which part of it is
/// taken. Empty when the range is within the clip, or wholly behind it.
std::string rangeNote(const FrameRange& range, std::uint32_t count);

/// The indices of the range in a clip of `count` frames, in ascending order.
std::vector<std::uint32_t> framesOf(const FrameRange& range, std::uint32_t count);

}  // namespace simhost::tool
