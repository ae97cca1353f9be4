#include <algorithm>
#include <cmath>
#include <string>

#include "host/result_codes.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void soundFinite(Trial& trial) {
    constexpr float kFarBeyond = 16.0F;
    Stage stage(trial);
    forSteadySound(trial, stage, [&](Playing& playing) {
        const auto size = static_cast<std::uint32_t>(std::min<std::uint64_t>(playing.sound()->length, 20000));
        const AudioAnswer answer = playing.clip().importAudio(0, size, playing.sound()->channels);
        for (const auto& channel : answer.channels) {
            const auto wrong = std::find_if(channel.begin(), channel.end(), [](float sample) {
                return !std::isfinite(sample) || std::fabs(sample) > kFarBeyond;
            });
            if (answer.result != host::imNoErr || wrong == channel.end()) {
                continue;
            }
            const Finding finding{
                .call = "imImportAudio7, sample frame " + std::to_string(wrong - channel.begin()),
                .field = "imImportAudioRec7.buffer",
                .clip = playing.path(),
                .seen = std::to_string(*wrong)};
            if (std::isfinite(*wrong)) {
                trial.warn(finding);
            } else {
                trial.fail(finding);
            }
        }
    });
}

const Registered kSoundFinite({"sound.finite", 3, "Samples are numbers, and not far beyond full scale.",
                               "One that is none makes the whole mix silent.", soundFinite});

}  // namespace
}  // namespace simhost::tool::validate
