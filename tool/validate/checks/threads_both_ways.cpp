#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tool/validate/base/async_frames.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void threadsBothWays(Trial& trial) {
    Stage stage(trial);
    forSteadyAsync(trial, stage, [&](Playing& playing, AsyncClip& async) {
        const std::uint32_t format = playing.formats().front();
        const auto frames = playing.someFrames(trial, 6);
        std::vector<std::optional<Picture>> expected;
        for (const std::uint32_t frame : frames) {
            expected.push_back(playing.picture(frame, format));
        }
        std::thread other([&] {
            const host::imFrameFormat wanted[] = {{0, 0, format}};
            for (const std::uint32_t frame : frames) {
                (void)async.initiate(playing.clip().frameTime(frame), wanted);
                (void)async.getFrame(playing.clip().frameTime(frame), wanted);
            }
        });
        for (std::size_t i = 0; i < frames.size(); ++i) {
            const std::string difference = pictureDifference(expected[i], playing.picture(frames[i], format));
            if (!difference.empty()) {
                trial.fail({.call = frameCall(frames[i], format) + " while aiGetFrame runs",
                            .clip = playing.path(),
                            .seen = difference});
            }
        }
        other.join();
    });
}

const Registered kThreadsBothWays({"threads.both-ways", 6,
                                   "A clip can be asked for frames both ways at once.",
                                   "The host exports in the background what it shows.", threadsBothWays});

}  // namespace
}  // namespace simhost::tool::validate
