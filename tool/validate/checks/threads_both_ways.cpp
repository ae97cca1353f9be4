#include <thread>

#include "tool/validate/base/check.h"
#include "tool/validate/base/known_frames.h"

namespace simhost::tool::validate {
namespace {

void threadsBothWays(Trial& trial) {
    Stage stage(trial);
    forSteadyAsync(trial, stage, [&](Playing& playing, AsyncClip& async) {
        const KnownFrames known(trial, playing, 6);
        std::thread other([&] {
            const host::imFrameFormat wanted[] = {{0, 0, known.format()}};
            for (std::size_t i = 0; i < known.count(); ++i) {
                const host::PrTime time = playing.clip().frameTime(known.frame(i));
                (void)async.initiate(time, wanted);
                (void)async.getFrame(time, wanted);
            }
        });
        for (std::size_t i = 0; i < known.count(); ++i) {
            (void)known.isShown(trial, playing, i, " while aiGetFrame runs");
        }
        other.join();
    });
}

const Registered kThreadsBothWays({"threads.both-ways", 6,
                                   "A clip can be asked for frames both ways at once.",
                                   "The host exports in the background what it shows.", threadsBothWays});

}  // namespace
}  // namespace simhost::tool::validate
