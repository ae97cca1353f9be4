#include <atomic>
#include <string>
#include <thread>

#include "tool/validate/base/check.h"
#include "tool/validate/base/known_frames.h"

namespace simhost::tool::validate {
namespace {

void threadsCloseBeside(Trial& trial) {
    Stage stage(trial);
    forSteadyPictures(trial, stage, [&](Playing& playing) {
        const KnownFrames known(trial, playing, 6);
        const auto isShownAll = [&](const std::string& when) {
            for (std::size_t i = 0; i < known.count(); ++i) {
                if (!known.isShown(trial, playing, i, when)) {
                    return false;
                }
            }
            return true;
        };
        std::atomic<bool> over{false};
        std::thread other([&] {
            for (int round = 0; round < 10; ++round) {
                (void)Playing::open(stage.importer(), playing.path());
            }
            over = true;
        });
        while (!over && isShownAll(" while another thread opens and closes the same file")) {
        }
        other.join();
        (void)isShownAll(" behind imCloseFile of the same file on another thread");
    });
}

const Registered kThreadsCloseBeside({"threads.close-beside", 6,
                                      "A clip plays on while others are opened and closed on another thread.",
                                      "The user removes one clip of many, and the host closes it wherever a "
                                      "thread is free.",
                                      threadsCloseBeside});

}  // namespace
}  // namespace simhost::tool::validate
