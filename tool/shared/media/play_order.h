// The orders in which a user plays a clip, as lists of frame indices. Pure functions; any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace simhost::tool {

enum class PlayPattern { kSequential, kScrub, kReverse, kRandom };

std::optional<PlayPattern> parsePlayPattern(std::string_view text);

/// The given frames in the order of the pattern. Scrubbing goes forward in strides and back again within the
/// clip, and so comes by some frames several times; random draws as many frames as there are, with
/// repetitions, the same for one seed everywhere.
std::vector<std::uint32_t> playOrder(PlayPattern pattern, const std::vector<std::uint32_t>& frames,
                                     std::uint32_t seed);

}  // namespace simhost::tool
