#include "host/result_codes.h"
#include "tool/validate/base/async_frames.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void asyncCancel(Trial& trial) {
    Stage stage(trial);
    forSteadyAsync(trial, stage, [&](Playing& playing, AsyncClip& async) {
        const std::uint32_t format = playing.formats().front();
        const host::imFrameFormat wanted[] = {{0, 0, format}};
        for (const std::uint32_t frame : playing.someFrames(trial, 3)) {
            initiateFrame(playing, async, frame, format);
            (void)async.cancel(playing.clip().frameTime(frame), wanted);
            initiateFrame(playing, async, frame, format);
            compareAsyncFrame(trial, playing, async, frame, format, " behind aiCancelAsyncRead");
        }
    });
}

const Registered kAsyncCancel({"async.cancel", 4, "A request that was cancelled may be made again.",
                               "The host cancels what it will not show, and its user changes his mind.",
                               asyncCancel});

}  // namespace
}  // namespace simhost::tool::validate
