#include <algorithm>
#include <string>

#include "host/result_codes.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void soundDelivered(Trial& trial) {
    Stage stage(trial);
    forSound(trial, stage, [&](Playing& playing) {
        const auto size = static_cast<std::uint32_t>(std::min<std::uint64_t>(playing.sound()->length, 1000));
        const AudioAnswer answer = playing.clip().importAudio(0, size, playing.sound()->channels);
        if (answer.result != host::imNoErr) {
            trial.fail({.call = "imImportAudio7, " + std::to_string(size) + " sample frames from 0",
                        .clip = playing.path(),
                        .seen = "result " + std::to_string(answer.result)});
        }
    });
}

const Registered kSoundDelivered({"sound.delivered", 1,
                                  "The sound that imGetInfo8 tells of can be read from its beginning.",
                                  "The host reads it at once to draw its waveform.", soundDelivered});

}  // namespace
}  // namespace simhost::tool::validate
