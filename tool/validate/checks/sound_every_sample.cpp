#include <algorithm>
#include <string>

#include "host/result_codes.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void soundEverySample(Trial& trial) {
    Stage stage(trial);
    forSteadySound(trial, stage, [&](Playing& playing) {
        const std::uint64_t length = playing.sound()->length;
        const auto size = static_cast<std::uint32_t>(std::min<std::uint64_t>(length, 3000));
        const auto position = static_cast<std::int64_t>(length - size);
        const AudioAnswer first =
            playing.clip().importAudio(position, size, playing.sound()->channels, -12345.0F);
        const AudioAnswer second =
            playing.clip().importAudio(position, size, playing.sound()->channels, 6789.0F);
        const std::string difference = soundDifference(first.channels, second.channels);
        if (first.result == host::imNoErr && !difference.empty()) {
            trial.fail({.call = "imImportAudio7, the last " + std::to_string(size) + " sample frames",
                        .field = "imImportAudioRec7.buffer",
                        .clip = playing.path(),
                        .seen = difference + ", when the buffer holds other numbers"});
        }
    });
}

const Registered kSoundEverySample({"sound.every-sample", 3, "Every sample that was asked for is written.",
                                    "A new buffer holds what was there before: noise.", soundEverySample});

}  // namespace
}  // namespace simhost::tool::validate
