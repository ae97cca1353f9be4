#include <string>
#include <thread>
#include <vector>

#include "tool/validate/base/async_frames.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void threadsOpenAndClose(Trial& trial) {
    Stage stage(trial);
    forClips(trial, stage, [&](Playing& playing) {
        std::vector<std::thread> threads;
        threads.reserve(4);
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([&] {
                for (int round = 0; round < 10; ++round) {
                    if (Playing::open(stage.importer(), playing.path()) == nullptr) {
                        trial.fail({.call = "imOpenFile8 and imGetInfo8 on four threads at once",
                                    .clip = playing.path(),
                                    .seen = "it is refused"});
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

const Registered kThreadsOpenAndClose({"threads.open-and-close", 6,
                                       "Clips can be opened and closed on several threads at once.",
                                       "The host opens a whole project at once.", threadsOpenAndClose});

}  // namespace
}  // namespace simhost::tool::validate
