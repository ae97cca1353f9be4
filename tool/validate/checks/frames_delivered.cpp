#include <algorithm>
#include <string>

#include "host/result_codes.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void framesDelivered(Trial& trial) {
    Stage stage(trial);
    bool any = false;
    forClips(trial, stage, [&](Playing& playing) {
        if (playing.frames() == 0 || playing.info().vidInfo.supportsGetSourceVideo == 0) {
            return;
        }
        const bool made =
            std::any_of(trial.setting().clips.begin(), trial.setting().clips.end(),
                        [&](const ClipFile& clip) { return clip.made && clip.path == playing.path(); });
        // Clips of the tool's own making may be coded in a way that this importer has no codec for.
        if (made && !playing.showsPictures()) {
            return;
        }
        any = true;
        for (const std::uint32_t format : playing.formats()) {
            const FrameAnswer answer = playing.clip().getFrame(0, format);
            if (answer.result != host::imNoErr) {
                trial.fail({.call = frameCall(0, format),
                            .clip = playing.path(),
                            .seen = "result " + std::to_string(answer.result)});
            }
        }
    });
    if (!any) {
        Trial::skip("the plug-in shows no picture of any clip");
    }
}

const Registered kFramesDelivered(
    {"frames.delivered", 1,
     "The first frame of a clip with pictures is delivered in every pixel format that is on offer.",
     "The host chooses one of them, and shows nothing when it is refused then.", framesDelivered});

}  // namespace
}  // namespace simhost::tool::validate
