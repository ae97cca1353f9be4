#include <string>

#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void recordsPictureValues(Trial& trial) {
    Stage stage(trial);
    forClips(trial, stage, [&](Playing& playing) {
        const host::imFileInfoRec8& info = playing.info();
        const auto require = [&](bool good, const char* field, std::int64_t seen) {
            if (!good) {
                trial.fail({.call = "imGetInfo8, stream 0",
                            .field = std::string("imFileInfoRec8.") + field,
                            .clip = playing.path(),
                            .seen = std::to_string(seen)});
            }
        };
        require(info.hasVideo == 0 || info.hasVideo == 1, "hasVideo", info.hasVideo);
        if (info.hasVideo != 1) {
            return;
        }
        require(info.vidInfo.imageWidth > 0, "vidInfo.imageWidth", info.vidInfo.imageWidth);
        require(info.vidInfo.imageHeight > 0, "vidInfo.imageHeight", info.vidInfo.imageHeight);
        require(info.vidScale > 0, "vidScale", info.vidScale);
        require(info.vidSampleSize > 0, "vidSampleSize", info.vidSampleSize);
        require(info.vidDuration > 0, "vidDuration", info.vidDuration);
        require(info.vidInfo.pixelAspectNum > 0, "vidInfo.pixelAspectNum", info.vidInfo.pixelAspectNum);
        require(info.vidInfo.pixelAspectDen > 0, "vidInfo.pixelAspectDen", info.vidInfo.pixelAspectDen);
        require(info.vidInfo.fieldType >= 0 && info.vidInfo.fieldType <= 3, "vidInfo.fieldType",
                info.vidInfo.fieldType);
    });
}

const Registered kRecordsPictureValues(
    {"records.picture-values", 1, "A stream with pictures tells their size, rate and duration, each above 0.",
     "The host makes its timeline of them, and divides by them.", recordsPictureValues});

}  // namespace
}  // namespace simhost::tool::validate
