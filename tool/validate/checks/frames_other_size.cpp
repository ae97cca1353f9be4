#include <string>

#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void framesOtherSize(Trial& trial) {
    Stage stage(trial);
    forPictures(trial, stage, [&](Playing& playing) {
        const std::int32_t width = playing.info().vidInfo.imageWidth;
        const std::int32_t height = playing.info().vidInfo.imageHeight;
        const std::int32_t sizes[][2] = {
            {width / 2 + 1, height / 2 + 1}, {1, 1}, {width + 3, height}, {-5, -5}, {width, 0}};
        for (const auto& size : sizes) {
            const host::imFrameFormat wanted[] = {{size[0], size[1], playing.formats().front()}};
            const FrameAnswer answer = playing.clip().getSourceVideo(0, wanted);
            if (!answer.frame) {
                continue;
            }
            const auto fits = [](std::int32_t seen, std::int32_t asked, std::int32_t own) {
                return seen == own || seen == asked;
            };
            if (!fits(answer.frame->width(), size[0], width) ||
                !fits(answer.frame->height(), size[1], height)) {
                trial.fail({.call = frameCall(0, wanted[0].inPixelFormat) + " in " + std::to_string(size[0]) +
                                    " x " + std::to_string(size[1]),
                            .clip = playing.path(),
                            .seen = "a frame of " + std::to_string(answer.frame->width()) + " x " +
                                    std::to_string(answer.frame->height())});
            }
        }
    });
}

const Registered kFramesOtherSize(
    {"frames.other-size", 5,
     "A frame in a size that is not the clip's own is refused, or has that size or the clip's own.",
     "The host scales what is not as it asked, by the size of the frame.", framesOtherSize});

}  // namespace
}  // namespace simhost::tool::validate
