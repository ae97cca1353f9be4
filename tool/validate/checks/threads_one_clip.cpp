#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tool/validate/base/async_frames.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void threadsOneClip(Trial& trial) {
    Stage stage(trial);
    forSteadyPictures(trial, stage, [&](Playing& playing) {
        const std::uint32_t format = playing.formats().front();
        const auto frames = playing.someFrames(trial, 6);
        std::vector<std::optional<Picture>> expected;
        for (const std::uint32_t frame : frames) {
            expected.push_back(playing.picture(frame, format));
        }
        std::vector<std::thread> threads;
        for (std::size_t thread = 0; thread < 3; ++thread) {
            threads.emplace_back([&, thread] {
                for (std::size_t round = 0; round < 2 * frames.size(); ++round) {
                    const std::size_t i = (round + thread) % frames.size();
                    if (playing.sound() && thread == 0) {
                        (void)playing.clip().importAudio(static_cast<std::int64_t>(round), 50,
                                                         playing.sound()->channels);
                    }
                    const std::string difference =
                        pictureDifference(expected[i], playing.picture(frames[i], format));
                    if (!difference.empty()) {
                        trial.fail({.call = frameCall(frames[i], format) + ", three threads on one clip",
                                    .clip = playing.path(),
                                    .seen = difference});
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
