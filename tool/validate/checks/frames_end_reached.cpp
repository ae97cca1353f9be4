#include <string>

#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void framesEndReached(Trial& trial) {
    Stage stage(trial);
    forPictures(trial, stage, [&](Playing& playing) {
        const std::uint32_t last = playing.frames() - 1;
        if (!playing.picture(last)) {
            trial.fail({.call = frameCall(last, playing.formats().front()),
                        .field = "imFileInfoRec8.vidDuration",
                        .clip = playing.path(),
                        .seen = "no frame, though there are said to be " + std::to_string(playing.frames())});
        }
    });
}

const Registered kFramesEndReached({"frames.end-reached", 2,
                                    "The last frame that imGetInfo8 promises is delivered.",
                                    "The host shows and exports clips to their end.", framesEndReached});

}  // namespace
}  // namespace simhost::tool::validate
