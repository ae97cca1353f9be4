#include <string>

#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void framesSameTwice(Trial& trial) {
    Stage stage(trial);
    forPictures(trial, stage, [&](Playing& playing) {
        for (const std::uint32_t format : playing.formats()) {
            for (const std::uint32_t frame : playing.someFrames(trial, 2)) {
                const auto first = playing.picture(frame, format);
                const std::string difference = pictureDifference(first, playing.picture(frame, format));
                if (!difference.empty()) {
                    trial.fail({.call = frameCall(frame, format) + ", twice",
                                .clip = playing.path(),
                                .seen = difference});
                    return;
                }
            }
        }
    });
}

const Registered kFramesSameTwice({"frames.same-twice", 2,
                                   "The same frame asked for twice is the same picture.",
                                   "The host compares, caches and exports by that.", framesSameTwice});

}  // namespace
}  // namespace simhost::tool::validate
