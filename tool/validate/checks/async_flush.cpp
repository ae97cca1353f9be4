#include "host/result_codes.h"
#include "tool/validate/base/async_frames.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void asyncFlush(Trial& trial) {
    Stage stage(trial);
    forSteadyAsync(trial, stage, [&](Playing& playing, AsyncClip& async) {
        const std::uint32_t format = playing.formats().front();
        for (int round = 0; round < 3; ++round) {
            for (const std::uint32_t frame : playing.someFrames(trial, 4)) {
                initiateFrame(playing, async, frame, format);
            }
            (void)async.flush();
            const auto frame = static_cast<std::uint32_t>(trial.draw(playing.frames()));
            initiateFrame(playing, async, frame, format);
            compareAsyncFrame(trial, playing, async, frame, format, " behind aiFlush");
        }
        (void)async.flush();
        (void)async.flush();
    });
}

const Registered kAsyncFlush({"async.flush", 3, "Behind aiFlush the asynchronous importer begins anew.",
                              "The host flushes each time that its user stops or jumps.", asyncFlush});

}  // namespace
}  // namespace simhost::tool::validate
