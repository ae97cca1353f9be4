#include <string>

#include "host/result_codes.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void soundGoesOn(Trial& trial) {
    Stage stage(trial);
    forSteadySound(trial, stage, [&](Playing& playing) {
        if (playing.sound()->length < 300) {
            return;
        }
        const std::uint32_t channels = playing.sound()->channels;
        const AudioAnswer second = playing.clip().importAudio(100, 100, channels);
        const AudioAnswer third = playing.clip().importAudio(200, 100, channels);
        (void)playing.clip().importAudio(0, 100, channels);
        for (const AudioAnswer* expected : {&second, &third}) {
            const AudioAnswer seen = playing.clip().importAudio(-1, 100, channels);
            const std::string difference = soundDifference(expected->channels, seen.channels);
            if (seen.result == host::imNoErr && !difference.empty()) {
                trial.fail({.call = "imImportAudio7, 100 sample frames from -1",
                            .field = "imImportAudioRec7.position",
                            .clip = playing.path(),
                            .seen = difference});
                return;
            }
        }
    });
}

const Registered kSoundGoesOn({"sound.goes-on", 4,
                               "A negative position goes on where the read before it ended.",
                               "The host reads so when it conforms a whole clip.", soundGoesOn});

}  // namespace
}  // namespace simhost::tool::validate
