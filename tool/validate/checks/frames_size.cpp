#include <string>

#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void framesSize(Trial& trial) {
    Stage stage(trial);
    forPictures(trial, stage, [&](Playing& playing) {
        const std::int32_t width = playing.info().vidInfo.imageWidth;
        const std::int32_t height = playing.info().vidInfo.imageHeight;
        for (const bool named : {false, true}) {
            for (const std::uint32_t format : playing.formats()) {
                const host::imFrameFormat wanted[] = {{named ? width : 0, named ? height : 0, format}};
                const FrameAnswer answer = playing.clip().getSourceVideo(0, wanted);
                const std::string call =
                    frameCall(0, format) + (named ? " in the clip's own size" : " in any size");
                if (!answer.frame) {
                    if (named && playing.picture(0, format)) {
                        trial.fail({.call = call,
                                    .field = "imFrameFormat.inFrameWidth",
                                    .clip = playing.path(),
                                    .seen = "result " + std::to_string(answer.result)});
                    }
                } else if (answer.frame->width() != width || answer.frame->height() != height) {
                    trial.fail({.call = call,
                                .clip = playing.path(),
                                .seen = "a frame of " + std::to_string(answer.frame->width()) + " x " +
                                        std::to_string(answer.frame->height()) + " instead of " +
                                        std::to_string(width) + " x " + std::to_string(height)});
                }
            }
        }
    });
}

const Registered kFramesSize(
    {"frames.size", 2, "A frame for which no size was asked, or the clip's own, has the clip's own size.",
     "The host places it by the size that imGetInfo8 told.", framesSize});

}  // namespace
}  // namespace simhost::tool::validate
