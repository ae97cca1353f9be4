// All scenarios: the few calls of a host that meet, each small enough for all of its schedules to be run.
#pragma once

#include <span>

#include "tests/schedules/world/stage.h"

namespace schedules {

std::span<const Scenario> asyncScenarios();
std::span<const Scenario> syncScenarios();

}  // namespace schedules
