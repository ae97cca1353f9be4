#include <string>
#include <utility>
#include <vector>

#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void framesHeld(Trial& trial) {
    Stage stage(trial);
    forSteadyPictures(trial, stage, [&](Playing& playing) {
        const std::uint32_t format = playing.formats().front();
        std::vector<std::pair<std::uint32_t, FrameAnswer>> held;
        std::vector<Picture> before;
        for (const std::uint32_t frame : playing.someFrames(trial, 10)) {
            held.emplace_back(frame, playing.clip().getFrame(frame, format));
            before.push_back(held.back().second.frame ? held.back().second.frame->picture() : Picture());
        }
        (void)playing.clip().close();
        for (std::size_t i = 0; i < held.size(); ++i) {
            if (held[i].second.frame && held[i].second.frame->picture() != before[i]) {
                trial.fail({.call = frameCall(held[i].first, format) + ", held until imCloseFile",
                            .clip = playing.path(),
                            .seen = "it has changed"});
            }
        }
    });
}

const Registered kFramesHeld({"frames.held", 5,
                              "Frames that the host holds stay as they are while others are delivered.",
                              "It caches them by the hundred.", framesHeld});

}  // namespace
}  // namespace simhost::tool::validate
