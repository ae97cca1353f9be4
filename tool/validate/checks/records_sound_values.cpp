#include <string>

#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void recordsSoundValues(Trial& trial) {
    Stage stage(trial);
    forClips(trial, stage, [&](Playing& playing) {
        const host::imFileInfoRec8& info = playing.info();
        const auto require = [&](bool good, const char* field, const std::string& seen) {
            if (!good) {
                trial.fail({.call = "imGetInfo8, stream 0",
                            .field = std::string("imFileInfoRec8.") + field,
                            .clip = playing.path(),
                            .seen = seen});
            }
        };
        require(info.hasAudio == 0 || info.hasAudio == 1, "hasAudio", std::to_string(info.hasAudio));
        if (info.hasAudio != 1) {
            return;
        }
        require(info.audInfo.numChannels > 0, "audInfo.numChannels",
                std::to_string(info.audInfo.numChannels));
        require(info.audInfo.sampleRate > 0 && info.audInfo.sampleRate < 1e7F, "audInfo.sampleRate",
                std::to_string(info.audInfo.sampleRate));
        require(info.audInfo.sampleType >= 1 && info.audInfo.sampleType <= 14, "audInfo.sampleType",
                std::to_string(info.audInfo.sampleType));
        require(info.audDuration >= 0, "audDuration", std::to_string(info.audDuration));
    });
}

const Registered kRecordsSoundValues(
    {"records.sound-values", 1, "A stream with sound tells its channels, rate, sample type and duration.",
     "The host makes its buffers and its timeline of them.", recordsSoundValues});

}  // namespace
}  // namespace simhost::tool::validate
