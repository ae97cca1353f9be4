#include <algorithm>
#include <string>
#include <vector>

#include "host/result_codes.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void soundSplits(Trial& trial) {
    Stage stage(trial);
    forSteadySound(trial, stage, [&](Playing& playing) {
        const std::uint32_t channels = playing.sound()->channels;
        const auto size = static_cast<std::uint32_t>(std::min<std::uint64_t>(playing.sound()->length, 6000));
        const auto first = static_cast<std::int64_t>(trial.draw(playing.sound()->length - size + 1));
        const AudioAnswer whole = playing.clip().importAudio(first, size, channels);
        std::vector<std::vector<float>> joined(channels);
        for (std::uint32_t done = 0; done < size;) {
            const auto part = static_cast<std::uint32_t>(
                std::min<std::uint64_t>(size - done, 1 + trial.draw(trial.draw(2) == 0 ? 20 : 2000)));
            const AudioAnswer answer = playing.clip().importAudio(first + done, part, channels);
            for (std::uint32_t channel = 0; channel < channels; ++channel) {
                joined[channel].insert(joined[channel].end(), answer.channels[channel].begin(),
                                       answer.channels[channel].end());
            }
            done += part;
        }
        const std::string difference = soundDifference(whole.channels, joined);
        if (whole.result == host::imNoErr && !difference.empty()) {
            trial.fail({.call = "imImportAudio7, " + std::to_string(size) + " sample frames from " +
                                std::to_string(first) + ", in parts",
                        .field = "imImportAudioRec7.position",
                        .clip = playing.path(),
                        .seen = difference});
        }
    });
}

const Registered kSoundSplits(
    {"sound.splits", 2, "Sound that is read in parts of any size is what it is in one.",
     "The host reads in parts of a frame, of a second, or of a peak file, and joins them without a click.",
     soundSplits});

}  // namespace
}  // namespace simhost::tool::validate
