#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void framesAnyOrder(Trial& trial) {
    Stage stage(trial);
    forSteadyPictures(trial, stage, [&](Playing& playing) {
        const std::uint32_t format = playing.formats()[trial.draw(playing.formats().size())];
        const std::uint32_t count = std::min<std::uint32_t>(playing.frames(), 8);
        const auto first = static_cast<std::uint32_t>(trial.draw(playing.frames() - count + 1));
        std::vector<std::optional<Picture>> inTurn;
        for (std::uint32_t i = 0; i < count; ++i) {
            inTurn.push_back(playing.picture(first + i, format));
        }
        for (std::uint32_t tries = 0; tries < 2 * count; ++tries) {
            const auto i = static_cast<std::uint32_t>(trial.draw(count));
            const std::string difference = pictureDifference(inTurn[i], playing.picture(first + i, format));
            if (!difference.empty()) {
                trial.fail({.call = frameCall(first + i, format) + ", out of order",
                            .clip = playing.path(),
                            .seen = difference + ", compared with frames in turn"});
                return;
            }
        }
    });
}

const Registered kFramesAnyOrder({"frames.any-order", 3,
                                  "A frame is the same picture in whatever order frames are asked for.",
                                  "Its user plays forwards, backwards, and jumps.", framesAnyOrder});

}  // namespace
}  // namespace simhost::tool::validate
