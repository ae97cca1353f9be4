#include <string>

#include "host/result_codes.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void soundSameTwice(Trial& trial) {
    Stage stage(trial);
    forSound(trial, stage, [&](Playing& playing) {
        const std::uint64_t length = playing.sound()->length;
        for (int i = 0; i < 4; ++i) {
            const auto position = static_cast<std::int64_t>(i == 0 ? 0 : trial.draw(length));
            const auto size = static_cast<std::uint32_t>(1 + trial.draw(2000));
            const AudioAnswer first = playing.clip().importAudio(position, size, playing.sound()->channels);
            const AudioAnswer again = playing.clip().importAudio(position, size, playing.sound()->channels);
            const std::string difference = soundDifference(first.channels, again.channels);
            if (first.result == host::imNoErr && !difference.empty()) {
                trial.fail({.call = "imImportAudio7, " + std::to_string(size) + " sample frames from " +
                                    std::to_string(position) + ", twice",
                            .clip = playing.path(),
                            .seen = difference});
                return;
            }
        }
    });
}

const Registered kSoundSameTwice({"sound.same-twice", 2,
                                  "The same sample frames asked for twice are the same samples.",
                                  "The host compares, caches and exports by that.", soundSameTwice});

}  // namespace
}  // namespace simhost::tool::validate
