#include <string>

#include "simhost/text.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void framesUnknownFormat(Trial& trial) {
    Stage stage(trial);
    forPictures(trial, stage, [&](Playing& playing) {
        for (const std::uint32_t format : {0x78787878u, 0xFFFFFFFFu, 0x61726742u}) {
            const FrameAnswer answer = playing.clip().getFrame(0, format);
            if (answer.frame && answer.frame->pixelFormat() != format) {
                trial.fail(
                    {.call = "imGetSourceVideo, frame 0 as " + codeText(format, false),
                     .field = "imFrameFormat.inPixelFormat",
                     .clip = playing.path(),
                     .seen = std::string("a frame as ") + pixelFormatName(answer.frame->pixelFormat())});
            }
        }
    });
}

const Registered kFramesUnknownFormat(
    {"frames.unknown-format", 4, "A pixel format that is not on offer is refused, or delivered as it is.",
     "The host reads the pixels as what it asked for.", framesUnknownFormat});

}  // namespace
}  // namespace simhost::tool::validate
