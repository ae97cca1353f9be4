#include <limits>
#include <string>

#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void framesOutOfRange(Trial& trial) {
    Stage stage(trial);
    forPictures(trial, stage, [&](Playing& playing) {
        const host::imFrameFormat wanted[] = {{0, 0, playing.formats().front()}};
        const host::PrTime end = playing.clip().frameTime(playing.frames());
        constexpr host::PrTime kMost = std::numeric_limits<host::PrTime>::max();
        for (const host::PrTime time :
             {host::PrTime{-1}, -end, std::numeric_limits<host::PrTime>::min(), end, 2 * end, kMost}) {
            (void)playing.clip().getSourceVideo(time, wanted);
        }
        if (!playing.picture(0)) {
            trial.fail({.call = frameCall(0, wanted[0].inPixelFormat) + " behind requests out of range",
                        .clip = playing.path(),
                        .seen = "no frame any more"});
        }
    });
}

const Registered kFramesOutOfRange(
    {"frames.out-of-range", 4,
     "A time before the first frame or behind the last one is answered without harm.",
     "The host rounds, and asks past the ends of a clip.", framesOutOfRange});

}  // namespace
}  // namespace simhost::tool::validate
