#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void soundNoSamples(Trial& trial) {
    Stage stage(trial);
    forSound(trial, stage, [&](Playing& playing) {
        (void)playing.clip().importAudio(0, 0, playing.sound()->channels);
        (void)playing.clip().importAudio(-1, 0, playing.sound()->channels);
        (void)playing.clip().importAudio(static_cast<std::int64_t>(playing.sound()->length), 0,
                                         playing.sound()->channels);
    });
}

const Registered kSoundNoSamples({"sound.no-samples", 4, "A request for no sample frames is harmless.",
                                  "The host makes one at the end of a clip.", soundNoSamples});

}  // namespace
}  // namespace simhost::tool::validate
