#include <future>
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
        bool refused = false;
        // All three live until the clip is closed: a thread that ends leaves its number to the next one.
        std::promise<void> opened;
        std::promise<void> played;
        std::promise<void> closed;
        const std::shared_future<void> over = closed.get_future().share();
        std::thread opener([&] {
            other = Playing::open(stage.importer(), playing.path());
            refused = other == nullptr;
            opened.set_value();
            over.wait();
        });
        std::thread player([&] {
            opened.get_future().wait();
            seen = !refused && other->showsPictures() ? other->picture(0) : std::nullopt;
            played.set_value();
            over.wait();
        });
        std::thread closer([&] {
            played.get_future().wait();
            other.reset();
            closed.set_value();
        });
        for (std::thread* const thread : {&opener, &player, &closer}) {
            thread->join();
        }
        if (refused) {
            trial.fail({.call = "imOpenFile8 and imGetInfo8 on another thread",
                        .clip = playing.path(),
                        .seen = "it is refused"});
            return;
        }
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
