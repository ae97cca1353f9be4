#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tool/validate/base/async_frames.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void threadsAsyncMany(Trial& trial) {
    Stage stage(trial);
    forSteadyAsync(trial, stage, [&](Playing& playing, AsyncClip& async) {
        const std::uint32_t format = playing.formats().front();
        const auto frames = playing.someFrames(trial, 8);
        std::vector<std::optional<Picture>> expected;
        for (const std::uint32_t frame : frames) {
            expected.push_back(playing.picture(frame, format));
        }
        std::vector<std::thread> threads;
        for (std::size_t first = 0; first < 4; ++first) {
            threads.emplace_back([&, first] {
                const host::imFrameFormat wanted[] = {{0, 0, format}};
                for (std::size_t i = first; i < frames.size(); i += 4) {
                    const host::PrTime time = playing.clip().frameTime(frames[i]);
                    (void)async.initiate(time, wanted);
                    const FrameAnswer answer = async.getFrame(time, wanted);
                    const auto seen = answer.frame ? std::optional(answer.frame->picture()) : std::nullopt;
                    const std::string difference = pictureDifference(expected[i], seen);
                    if (!difference.empty()) {
                        trial.fail(
                            {.call = frameCall(frames[i], format, "aiGetFrame") + " on four threads at once",
                             .clip = playing.path(),
                             .seen = difference});
                    }
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
