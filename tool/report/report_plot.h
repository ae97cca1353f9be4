// Drawings of a report as SVG paths: the sound of a channel, and the sizes of the frames. They have no text
// and take their colours from the page, so that one drawing fits light and dark, narrow and wide. Pure
// functions; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "tool/shared/media/sample_ranges.h"

namespace simhost::tool {

inline constexpr std::size_t kDrawingColumns = 800;

/// As an outline of the range in each column; columns without samples are at 0. `name` is told to those who
/// do not see it.
std::string waveSvg(const SampleRanges& ranges, const std::string& name);

/// Bars from 0 to the largest size; where several frames share a column, the largest is drawn pale and their
/// mean in full. Columns with an empty frame have a mark at the foot.
std::string frameSizeSvg(std::span<const std::uint32_t> sizes, const std::string& name,
                         std::size_t width = kDrawingColumns);

}  // namespace simhost::tool
