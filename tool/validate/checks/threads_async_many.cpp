#include <thread>
#include <vector>

#include "tool/validate/base/check.h"
#include "tool/validate/base/known_frames.h"

namespace simhost::tool::validate {
namespace {

void threadsAsyncMany(Trial& trial) {
    Stage stage(trial);
    forSteadyAsync(trial, stage, [&](Playing& playing, AsyncClip& async) {
        const KnownFrames known(trial, playing, 8);
        std::vector<std::thread> threads;
        for (std::size_t first = 0; first < 4; ++first) {
            threads.emplace_back([&, first] {
                const host::imFrameFormat wanted[] = {{0, 0, known.format()}};
                for (std::size_t i = first; i < known.count(); i += 4) {
                    const host::PrTime time = playing.clip().frameTime(known.frame(i));
                    (void)async.initiate(time, wanted);
                    (void)known.isShown(trial, playing, i, async.getFrame(time, wanted),
                                        " on four threads at once");
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    });
}

const Registered kThreadsAsyncMany({"threads.async-many", 5,
                                    "The asynchronous entry can be called from several threads at once.",
                                    "The host announces on one thread and takes frames on others.",
                                    threadsAsyncMany});

}  // namespace
}  // namespace simhost::tool::validate
