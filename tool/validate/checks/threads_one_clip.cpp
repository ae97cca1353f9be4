#include <thread>
#include <vector>

#include "tool/validate/base/check.h"
#include "tool/validate/base/known_frames.h"

namespace simhost::tool::validate {
namespace {

void threadsOneClip(Trial& trial) {
    Stage stage(trial);
    forSteadyPictures(trial, stage, [&](Playing& playing) {
        const KnownFrames known(trial, playing, 6);
        std::vector<std::thread> threads;
        for (std::size_t thread = 0; thread < 3; ++thread) {
            threads.emplace_back([&, thread] {
                for (std::size_t round = 0; round < 2 * known.count(); ++round) {
                    if (playing.sound() && thread == 0) {
                        (void)playing.clip().importAudio(static_cast<std::int64_t>(round), 50,
                                                         playing.sound()->channels);
                    }
                    if (!known.isShown(trial, playing, (round + thread) % known.count(),
                                       ", three threads on one clip")) {
                        return;
                    }
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    });
}

const Registered kThreadsOneClip(
    {"threads.one-clip", 8, "One clip can be asked for frames and sound on several threads at once.",
     "The host promises otherwise, but hosts have had mistakes, and a project is worth more than a lock.",
     threadsOneClip});

}  // namespace
}  // namespace simhost::tool::validate
