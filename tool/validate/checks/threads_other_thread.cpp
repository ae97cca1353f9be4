#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tool/validate/base/async_frames.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void threadsOtherThread(Trial& trial) {
    Stage stage(trial);
    forSteadyPictures(trial, stage, [&](Playing& playing) {
        const auto expected = playing.picture(0);
        std::unique_ptr<Playing> other;
        std::optional<Picture> seen;
        std::thread([&] { other = Playing::open(stage.importer(), playing.path()); }).join();
        if (other == nullptr) {
            trial.fail({.call = "imOpenFile8 and imGetInfo8 on another thread",
                        .clip = playing.path(),
                        .seen = "it is refused"});
            return;
        }
        std::thread([&] { seen = other->showsPictures() ? other->picture(0) : std::nullopt; }).join();
        std::thread([&] { other.reset(); }).join();
        const std::string difference = pictureDifference(expected, seen);
        if (!difference.empty()) {
            trial.fail({.call = "imGetSourceVideo on another thread than imOpenFile8",
                        .clip = playing.path(),
                        .seen = difference});
        }
    });
}

const Registered kThreadsOtherThread(
    {"threads.other-thread", 3,
     "A clip can be opened on one thread, played on another and closed on a third.",
     "The host has threads for each, and sends each call to whichever is free.", threadsOtherThread});

}  // namespace
}  // namespace simhost::tool::validate
