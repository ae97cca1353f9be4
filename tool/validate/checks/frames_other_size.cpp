#include <string>

#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void tryOtherSize(Trial& trial, Playing& playing, const host::imFrameFormat& asked) {
    const std::int32_t width = playing.info().vidInfo.imageWidth;
    const std::int32_t height = playing.info().vidInfo.imageHeight;
    const FrameAnswer answer = playing.clip().getSourceVideo(0, {&asked, 1});
    if (!answer.frame) {
        return;
    }
    const auto fits = [](std::int32_t seen, std::int32_t wanted, std::int32_t own) {
        return seen == own || seen == wanted;
    };
    if (!fits(answer.frame->width(), asked.inFrameWidth, width) ||
        !fits(answer.frame->height(), asked.inFrameHeight, height)) {
        trial.fail({.call = frameCall(0, asked.inPixelFormat) + " in " + std::to_string(asked.inFrameWidth) +
                            " x " + std::to_string(asked.inFrameHeight),
                    .clip = playing.path(),
                    .seen = "a frame of " + std::to_string(answer.frame->width()) + " x " +
                            std::to_string(answer.frame->height())});
    }
}

void framesOtherSize(Trial& trial) {
    Stage stage(trial);
    forPictures(trial, stage, [&](Playing& playing) {
        const std::int32_t width = playing.info().vidInfo.imageWidth;
        const std::int32_t height = playing.info().vidInfo.imageHeight;
        const std::int32_t sizes[][2] = {
            {width / 2 + 1, height / 2 + 1}, {1, 1}, {width + 3, height}, {-5, -5}, {width, 0}};
        for (const std::uint32_t format : playing.formats()) {
            for (const auto& size : sizes) {
                tryOtherSize(trial, playing, {size[0], size[1], format});
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
