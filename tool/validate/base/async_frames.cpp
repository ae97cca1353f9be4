#include "tool/validate/base/async_frames.h"

namespace simhost::tool::validate {

void initiateFrame(const Playing& playing, const AsyncClip& async, std::uint32_t frame,
                   std::uint32_t format) {
    const host::imFrameFormat wanted[] = {{0, 0, format}};
    (void)async.initiate(playing.frameTime(frame), wanted);
}

void compareAsyncFrame(Trial& trial, Playing& playing, const AsyncClip& async, std::uint32_t frame,
                       std::uint32_t format, const std::string& when) {
    const host::imFrameFormat wanted[] = {{0, 0, format}};
    const FrameAnswer answer = async.getFrame(playing.frameTime(frame), wanted);
    const auto seen = answer.frame ? std::optional(answer.frame->picture()) : std::nullopt;
    const std::string difference = pictureDifference(playing.picture(frame, format), seen);
    if (!difference.empty()) {
        trial.fail({.call = frameCall(frame, format, "aiGetFrame") + when,
                    .clip = playing.path(),
                    .seen = difference + ", compared with imGetSourceVideo (result " +
                            std::to_string(answer.result) + ")"});
    }
}

}  // namespace simhost::tool::validate
