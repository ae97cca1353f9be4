#include <string>

#include "host/result_codes.h"
#include "tool/validate/base/async_frames.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void asyncNotAnnounced(Trial& trial) {
    Stage stage(trial);
    forSteadyAsync(trial, stage, [&](Playing& playing, AsyncClip& async) {
        const host::imFrameFormat wanted[] = {{0, 0, playing.formats().front()}};
        for (const std::uint32_t frame : playing.someFrames(trial, 4)) {
            const FrameAnswer answer = async.getFrame(playing.clip().frameTime(frame), wanted);
            if (answer.frame) {
                const std::string difference =
                    pictureDifference(playing.picture(frame), answer.frame->picture());
                if (!difference.empty()) {
                    trial.fail(
                        {.call = frameCall(frame, wanted[0].inPixelFormat, "aiGetFrame") + ", not announced",
                         .clip = playing.path(),
                         .seen = difference});
                }
            }
        }
    });
}

const Registered kAsyncNotAnnounced(
    {"async.not-announced", 4,
     "aiGetFrame without aiInitiateAsyncRead before it delivers the frame, or says that there is none.",
     "The host takes frames that it had no time to announce.", asyncNotAnnounced});

}  // namespace
}  // namespace simhost::tool::validate
