#include <string>

#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void framesNoList(Trial& trial) {
    Stage stage(trial);
    forPictures(trial, stage, [&](Playing& playing) {
        (void)playing.clip().getSourceVideo(0, {});
        const host::imFrameFormat any[] = {{0, 0, 0}};
        (void)playing.clip().getSourceVideo(0, any);
        if (!playing.picture(0)) {
            trial.fail({.call = frameCall(0, playing.formats().front()) + " behind requests without a format",
                        .clip = playing.path(),
                        .seen = "no frame any more"});
        }
    });
}

const Registered kFramesNoList({"frames.no-list", 4,
                                "A request without a list of formats is answered without harm.",
                                "The host leaves the list out when any format will do.", framesNoList});

}  // namespace
}  // namespace simhost::tool::validate
