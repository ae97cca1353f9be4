#include <algorithm>
#include <string>

#include "tool/shared/base/number_text.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"
#include "tool/validate/base/timing.h"

namespace simhost::tool::validate {
namespace {

void costFrame(Trial& trial) {
    Stage stage(trial);
    forPictures(trial, stage, [&](Playing& playing) {
        const double rate = framesPerSecond(playing.info());
        const std::uint32_t count = std::min<std::uint32_t>(playing.frames(), 10);
        std::uint32_t frame = 0;
        const double each = quickestSeconds(static_cast<int>(count), [&] { (void)playing.picture(frame++); });
        if (rate > 0 && each > std::max(5 / rate, 0.1)) {
            trial.warn({.call = frameCall(0, playing.formats().front()) + " and on",
                        .clip = playing.path(),
                        .seen = decimalText(each * 1000, 1) + " ms a frame"});
        }
    });
}

const Registered kCostFrame(
    {"cost.frame", 5,
     "A frame is delivered faster than five of them are shown, in the format on offer first.",
     "Slower, and no machine can play it.", costFrame});

}  // namespace
}  // namespace simhost::tool::validate
