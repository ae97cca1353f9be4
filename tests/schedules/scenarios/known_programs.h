// What the exploration has to find, or to count, on little programs of which that is known.
#pragma once

#include <cstdint>
#include <span>

#include "tests/schedules/world/stage.h"

namespace schedules {

struct KnownProgram {
    Scenario scenario;
    const char* finding;      ///< what its finding begins with; empty: there is none
    std::uint64_t schedules;  ///< how many there are with up to three preemptions; 0: not counted by hand
    bool needsWatch = false;  ///< it is found by the watch over plain memory, which not every build has
};

std::span<const KnownProgram> knownPrograms();

}  // namespace schedules
