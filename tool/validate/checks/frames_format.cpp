#include <string>

#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void framesFormat(Trial& trial) {
    Stage stage(trial);
    forPictures(trial, stage, [&](Playing& playing) {
        for (const std::uint32_t format : playing.formats()) {
            const FrameAnswer answer = playing.clip().getFrame(0, format);
            if (answer.frame && answer.frame->pixelFormat() != format) {
                trial.fail(
                    {.call = frameCall(0, format),
                     .field = "imFrameFormat.inPixelFormat",
                     .clip = playing.path(),
                     .seen = std::string("a frame as ") + pixelFormatName(answer.frame->pixelFormat())});
            }
        }
    });
}

const Registered kFramesFormat({"frames.format", 2, "A frame has the pixel format that was asked for.",
                                "The host reads the pixels as what it asked for.", framesFormat});

}  // namespace
}  // namespace simhost::tool::validate
