#include <algorithm>
#include <cstddef>
#include <string>

#include "host/result_codes.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void soundPastEnd(Trial& trial) {
    Stage stage(trial);
    forSteadySound(trial, stage, [&](Playing& playing) {
        const auto length = static_cast<std::int64_t>(playing.sound()->length);
        const auto before = static_cast<std::int64_t>(std::min<std::uint64_t>(playing.sound()->length, 100));
        for (const std::int64_t first : {length - before, length, length + 100000}) {
            const AudioAnswer answer = playing.clip().importAudio(first, 400, playing.sound()->channels);
            const auto silentFrom = static_cast<std::ptrdiff_t>(std::max<std::int64_t>(length - first, 0));
            for (const auto& channel : answer.channels) {
                const bool silent = std::all_of(channel.begin() + silentFrom, channel.end(),
                                                [](float sample) { return sample == 0.0F; });
                if (answer.result == host::imNoErr && !silent) {
                    trial.fail({.call = "imImportAudio7, 400 sample frames from " + std::to_string(first) +
                                        " of " + std::to_string(length),
                                .field = "imImportAudioRec7.buffer",
                                .clip = playing.path(),
                                .seen = "something else than silence behind the end"});
                    return;
                }
            }
        }
    });
}

const Registered kSoundPastEnd({"sound.past-end", 3,
                                "Sound that is asked for behind the end of a clip is refused or silent.",
                                "The host reads in blocks, and the last one goes over the end.",
                                soundPastEnd});

}  // namespace
}  // namespace simhost::tool::validate
