#include <string>

#include "host/result_codes.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void soundLayout(Trial& trial) {
    Stage stage(trial);
    bool any = false;
    forSound(trial, stage, [&](Playing& playing) {
        // The host presets the labels with 0, which is one too.
        const auto answer = playing.clip().channelLayout(0);
        if (answer.result != host::imNoErr) {
            return;
        }
        any = true;
        for (std::uint32_t channel = 0; channel < playing.sound()->channels; ++channel) {
            const std::uint32_t label = answer.record.outChannelLabels[channel];
            const bool known = label == 0 || (label >= 100 && label <= 119) || (label >= 127 && label <= 142);
            if (!known) {
                trial.fail(
                    {.call = "imGetAudioChannelLayout",
                     .field = "imGetAudioChannelLayoutRec.outChannelLabels[" + std::to_string(channel) + "]",
                     .clip = playing.path(),
                     .seen = std::to_string(label)});
            }
        }
    });
    if (!any) {
        Trial::skip("the plug-in answers no imGetAudioChannelLayout");
    }
}

const Registered kSoundLayout({"sound.layout", 2,
                               "imGetAudioChannelLayout gives each channel a label that the host knows.",
                               "By it the host maps channels to loudspeakers.", soundLayout});

}  // namespace
}  // namespace simhost::tool::validate
