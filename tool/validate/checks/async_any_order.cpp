#include <cstddef>
#include <vector>

#include "host/result_codes.h"
#include "tool/validate/base/async_frames.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void asyncAnyOrder(Trial& trial) {
    Stage stage(trial);
    forSteadyAsync(trial, stage, [&](Playing& playing, AsyncClip& async) {
        const std::uint32_t format = playing.formats().front();
        std::vector<std::uint32_t> frames = playing.someFrames(trial, 8);
        for (const std::uint32_t frame : frames) {
            initiateFrame(playing, async, frame, format);
        }
        while (!frames.empty()) {
            const std::size_t at = trial.draw(frames.size());
            compareAsyncFrame(trial, playing, async, frames[at], format, ", out of order");
            frames.erase(frames.begin() + static_cast<std::ptrdiff_t>(at));
        }
    });
}

const Registered kAsyncAnyOrder({"async.any-order", 4,
                                 "Frames that were asked for ahead can be taken in any order.",
                                 "The host skips and goes back when it cannot keep up.", asyncAnyOrder});

}  // namespace
}  // namespace simhost::tool::validate
