#include <string>
#include <thread>
#include <vector>

#include "tool/validate/base/async_frames.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void threadsFlushWhileWaiting(Trial& trial) {
    Stage stage(trial);
    forSteadyAsync(trial, stage, [&](Playing& playing, AsyncClip& async) {
        const host::imFrameFormat wanted[] = {{0, 0, playing.formats().front()}};
        for (int round = 0; round < 6; ++round) {
            const auto frames = playing.someFrames(trial, 4);
            for (const std::uint32_t frame : frames) {
                (void)async.initiate(playing.clip().frameTime(frame), wanted);
            }
            std::thread waiting(
                [&] { (void)async.getFrame(playing.clip().frameTime(frames.back()), wanted); });
            (void)async.flush();
            waiting.join();
        }
        initiateFrame(playing, async, 0, wanted[0].inPixelFormat);
        compareAsyncFrame(trial, playing, async, 0, wanted[0].inPixelFormat,
                          " behind aiFlush on another thread");
    });
}

const Registered kThreadsFlushWhileWaiting(
    {"threads.flush-while-waiting", 7,
     "aiFlush while another thread is in aiGetFrame ends that call, and harms nothing.",
     "The user stops while a frame is under way.", threadsFlushWhileWaiting});

}  // namespace
}  // namespace simhost::tool::validate
