#include "host/result_codes.h"
#include "tool/validate/base/async_frames.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void asyncCloseInFlight(Trial& trial) {
    Stage stage(trial);
    forAsync(trial, stage, [&](Playing& playing, AsyncClip& first) {
        (void)first.close();
        const auto before = stage.host().balance().frames;
        for (int round = 0; round < 4; ++round) {
            AsyncClip async(playing.clip());
            if (!async.isOpen()) {
                return;
            }
            for (const std::uint32_t frame :
                 playing.someFrames(trial, 1 + static_cast<std::uint32_t>(round) * 2)) {
                initiateFrame(playing, async, frame, playing.formats().front());
            }
            (void)async.flush();
            (void)async.close();
        }
        if (stage.host().balance().frames > before) {
            trial.fail({.call = "aiFlush, aiClose with requests under way",
                        .clip = playing.path(),
                        .seen = "a frame was left with the plug-in"});
        }
    });
}

const Registered kAsyncCloseInFlight(
    {"async.close-in-flight", 5,
     "aiFlush and aiClose with requests that nobody has taken lose nothing and harm nothing.",
     "The user closes a project while it plays.", asyncCloseInFlight});

}  // namespace
}  // namespace simhost::tool::validate
