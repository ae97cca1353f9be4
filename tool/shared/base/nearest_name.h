// For what users mistype. Pure functions; any thread.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace simhost::tool {

/// The name that takes the fewest changes of a letter to get from `word`, letters' case aside; empty when
/// none is near.
std::string nearestName(std::string_view word, std::span<const std::string> names);

}  // namespace simhost::tool
