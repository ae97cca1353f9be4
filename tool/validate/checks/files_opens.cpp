#include <string>

#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void filesOpens(Trial& trial) {
    Stage stage(trial);
    bool named = false;
    for (const ClipFile& clip : trial.setting().clips) {
        if (clip.made) {
            continue;
        }
        named = true;
        if (Playing::open(stage.importer(), clip.path) != nullptr) {
            continue;
        }
        Clip opened(stage.importer(), clip.path);
        if (!opened.isOpen()) {
            trial.fail({.call = "imOpenFile8",
                        .clip = clip.path,
                        .seen = "result " + std::to_string(opened.openResult())});
        } else {
            trial.fail({.call = "imGetInfo8, stream 0",
                        .clip = clip.path,
                        .seen = "result " + std::to_string(opened.getInfo(0).result)});
        }
    }
    if (!named) {
        forClips(trial, stage, [](Playing&) {});
    }
}

const Registered kFilesOpens(
    {"files.opens", 1, "Every clip that is named to be played is opened and described.",
     "What the importer refuses the host tells its user to be damaged or unsupported.", filesOpens});

}  // namespace
}  // namespace simhost::tool::validate
