#include <cstdint>

#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"
#include "tool/validate/base/protected_fields.h"

namespace simhost::tool::validate {
namespace {

void watchFields(Trial& trial, Playing& playing, Stage& stage) {
    Clip& clip = playing.clip();
    const std::string& path = playing.path();
    checkProtectedFields(trial, "imOpenFile8", path, clip.openAnswer());
    checkProtectedFields(trial, "imGetInfo8", path, clip.getInfo(0));
    checkProtectedFields(trial, "imAnalysis", path, clip.analysis(1000).answer);
    checkProtectedFields(trial, "imGetIndPixelFormat", path, clip.pixelFormat(0));
    if (playing.sound()) {
        checkProtectedFields(trial, "imImportAudio7", path,
                             clip.importAudio(0, 16, playing.sound()->channels).answer);
        checkProtectedFields(trial, "imGetAudioChannelLayout", path, clip.channelLayout());
    }
    if (playing.showsPictures()) {
        checkProtectedFields(trial, "imGetSourceVideo", path,
                             clip.getFrame(0, playing.formats().front()).answer);
        if (playing.saysAsync()) {
            const AsyncClip async(clip);
            checkProtectedFields(trial, "imCreateAsyncImporter", path, async.creation());
            if (async.isOpen()) {
                const host::imFrameFormat wanted[] = {{0, 0, playing.formats().front()}};
                checkProtectedFields(trial, "aiGetFrame", path, async.getFrame(0, wanted).answer);
            }
        }
    }
    (void)stage;
}

void recordsUntouchedFields(Trial& trial) {
    Stage stage(trial);
    // What a field holds by chance may be what a plug-in writes.
    for (const std::uint8_t fill : {std::uint8_t{0}, std::uint8_t{0x5A}}) {
        Importer importer = stage.importer();
        importer.setRecordFill(fill);
        checkProtectedFields(trial, "imInit", "", importer.init());
        for (const ClipFile& clip : trial.setting().clips) {
            if (const auto playing = Playing::open(importer, clip.path)) {
                watchFields(trial, *playing, stage);
            }
        }
    }
}

const Registered kRecordsUntouchedFields({"records.untouched-fields", 3,
                                          "A selector leaves the fields alone that the host filled in for it "
                                          "to read, and those that are reserved.",
                                          "The host goes on with what stands in them.",
                                          recordsUntouchedFields});

}  // namespace
}  // namespace simhost::tool::validate
