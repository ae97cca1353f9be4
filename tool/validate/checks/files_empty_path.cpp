#include <string_view>

#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void filesEmptyPath(Trial& trial) {
    Stage stage(trial);
    forClips(trial, stage, [](Playing&) {});  // one that opens nothing refuses this as well
    if (const Clip clip(stage.importer(), std::string_view()); clip.isOpen()) {
        trial.fail({.call = "imOpenFile8",
                    .field = "imFileOpenRec8.fileinfo.filepath",
                    .seen = "an empty path is opened"});
    }
}

const Registered kFilesEmptyPath({"files.empty-path", 5, "An empty path is refused.",
                                  "The host passes one for a clip that its user has to find again.",
                                  filesEmptyPath});

}  // namespace
}  // namespace simhost::tool::validate
