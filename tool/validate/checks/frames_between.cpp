#include <optional>
#include <string>

#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void framesBetween(Trial& trial) {
    Stage stage(trial);
    forSteadyPictures(trial, stage, [&](Playing& playing) {
        const host::imFrameFormat wanted[] = {{0, 0, playing.formats().front()}};
        for (const std::uint32_t frame : playing.someFrames(trial, 4)) {
            const host::PrTime begin = playing.clip().frameTime(frame);
            const host::PrTime end = playing.clip().frameTime(frame + 1);
            const auto expected = playing.picture(frame);
            for (const host::PrTime time : {begin + (end - begin) / 2, end - 1}) {
                if (time <= begin || time >= end) {
                    continue;
                }
                const FrameAnswer answer = playing.clip().getSourceVideo(time, wanted);
                const auto seen = answer.frame ? std::optional(answer.frame->picture()) : std::nullopt;
                const std::string difference = pictureDifference(expected, seen);
                if (!difference.empty()) {
                    trial.fail({.call = frameCall(frame, wanted[0].inPixelFormat) + ", " +
                                        std::to_string(time - begin) + " ticks behind its beginning",
                                .field = "imSourceVideoRec.inFrameTime",
                                .clip = playing.path(),
                                .seen = difference});
                }
            }
        }
    });
}

const Registered kFramesBetween({"frames.between", 4,
                                 "A time between the beginnings of two frames shows the first of the two.",
                                 "The timeline of the host runs at a rate of its own.", framesBetween});

}  // namespace
}  // namespace simhost::tool::validate
