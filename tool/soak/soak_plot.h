// Draws an endurance run as SVG. Pure; any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tool/soak/soak_samples.h"

namespace simhost::tool {

/// Three panels over time: memory, handles, and what is held at rest.
std::string soakPlot(std::string_view title, const std::vector<SoakSample>& samples);

}  // namespace simhost::tool
