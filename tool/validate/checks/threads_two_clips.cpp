#include <thread>

#include "tool/validate/base/check.h"
#include "tool/validate/base/known_frames.h"

namespace simhost::tool::validate {
namespace {

void threadsTwoClips(Trial& trial) {
    Stage stage(trial);
    forSteadyPictures(trial, stage, [&](Playing& playing) {
        const KnownFrames known(trial, playing, 6);
        const auto play = [&] {
            const auto own = Playing::open(stage.importer(), playing.path());
            for (std::size_t round = 0; own != nullptr && round < 3 * known.count(); ++round) {
                if (!known.isShown(trial, *own, round % known.count(), ", two clips at once")) {
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
