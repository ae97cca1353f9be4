#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tool/validate/base/async_frames.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void threadsTwoClips(Trial& trial) {
    Stage stage(trial);
    forSteadyPictures(trial, stage, [&](Playing& playing) {
        const std::uint32_t format = playing.formats().front();
        const auto frames = playing.someFrames(trial, 6);
        std::vector<std::optional<Picture>> expected;
        for (const std::uint32_t frame : frames) {
            expected.push_back(playing.picture(frame, format));
        }
        const auto play = [&] {
            const auto own = Playing::open(stage.importer(), playing.path());
            for (std::size_t round = 0; own != nullptr && round < 3 * frames.size(); ++round) {
                const std::size_t i = round % frames.size();
                const std::string difference =
                    pictureDifference(expected[i], own->picture(frames[i], format));
                if (!difference.empty()) {
                    trial.fail({.call = frameCall(frames[i], format) + ", two clips at once",
                                .clip = playing.path(),
                                .seen = difference});
                    return;
                }
            }
        };
        std::thread first(play);
        std::thread second(play);
        first.join();
        second.join();
    });
}

const Registered kThreadsTwoClips({"threads.two-clips", 5,
                                   "Two clips play at once on two threads as each does alone.",
                                   "A timeline has many clips, and the host as many threads as the machine.",
                                   threadsTwoClips});

}  // namespace
}  // namespace simhost::tool::validate
