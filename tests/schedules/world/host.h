// A host as small as a schedule needs: suites, frames and an event line, counted, with hooks for what a
// scenario wants to happen inside them. Its functions are steps of the thread that calls them and no places
// to change threads at: they touch nothing of the plug-in's.
#pragma once

#include <cstdint>
#include <functional>

#include "host/std_parms.h"
#include "host/suites.h"

namespace schedules::world {

struct Host {
    /// What a scenario sets.
    bool refusesCreator = false;          ///< the suite that makes frames is not to be had
    unsigned topRowFirst = 0;             ///< which answers it gives about the rows of formats: 0 to 7
    std::function<void()> onCreateFrame;  ///< called once, inside the plug-in's first request for a frame

    /// What a scenario asks.
    int creatorHeld = 0;      ///< acquisitions of that suite less its releases
    int creatorAcquired = 0;  ///< its acquisitions so far
    int suitesHeld = 0;
    int framesOut = 0;  ///< made, and not given back
};

/// The one of this process. begin() forgets what the schedule before has done to it; what the plug-in itself
/// holds from its start to its end is not counted.
Host& host() noexcept;
void beginHost();
host::imStdParms* stdParms() noexcept;

/// The number of the picture in the frame; -1 for a frame into which nothing was decoded.
int pictureIn(host::PPixHand frame) noexcept;
void giveBack(host::PPixHand frame) noexcept;

}  // namespace schedules::world
