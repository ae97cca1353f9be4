#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void filesFolder(Trial& trial) {
    Stage stage(trial);
    forClips(trial, stage, [](Playing&) {});  // one that opens nothing refuses this as well
    if (const Clip clip(stage.importer(), trial.setting().workFolder); clip.isOpen()) {
        trial.fail({.call = "imOpenFile8", .clip = "a folder", .seen = "it is opened"});
    }
}

const Registered kFilesFolder({"files.folder", 4, "A folder in the place of a file is refused.",
                               "Clips come as folders too, and the host tries them like files.",
                               filesFolder});

}  // namespace
}  // namespace simhost::tool::validate
