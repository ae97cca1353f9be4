#include "tool/shared/base/process_usage.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void playOnce(Trial& trial) {
    Stage stage(trial);
    for (const ClipFile& clip : trial.setting().clips) {
        if (const auto playing = Playing::open(stage.importer(), clip.path)) {
            (void)playing->showsPictures();
        }
    }
    const Clip refused(stage.importer(), "no such file");
}

void moduleThreadSlots(Trial& trial) {
    constexpr std::uint32_t kRounds = 4;
    playOnce(trial);
    const std::uint32_t before = freeThreadSlots();
    for (std::uint32_t round = 0; round < kRounds; ++round) {
        playOnce(trial);
    }
    const std::uint32_t after = freeThreadSlots();
    if (after + kRounds <= before) {
        trial.warn(
            {.call = "loading, playing and unloading, " + std::to_string(kRounds) + " times",
             .seen = std::to_string(before - after) +
                     " indexes of thread-local storage are gone, of the plug-in or of a library that it "
                     "loads"});
    }
}

const Registered kModuleThreadSlots(
    {"module.thread-slots", 4,
     "A module that was unloaded has given back its indexes of thread-local storage.",
     "A process has 1,088 for all plug-ins together, and what finds none ends the host.", moduleThreadSlots});

}  // namespace
}  // namespace simhost::tool::validate
