#include <string>

#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void filesMissing(Trial& trial) {
    Stage stage(trial);
    forClips(trial, stage, [](Playing&) {});  // one that opens nothing refuses this as well
    for (const char* name : {"missing.avi", "no-folder/missing.avi", "missing"}) {
        const std::string path = trial.freshPath("x") + "-" + name;
        if (const Clip clip(stage.importer(), path); clip.isOpen()) {
            trial.fail({.call = "imOpenFile8", .clip = path, .seen = "it is opened"});
        }
    }
}

const Registered kFilesMissing({"files.missing", 2, "A file that is not there is refused.",
                                "Projects outlive their files.", filesMissing});

}  // namespace
}  // namespace simhost::tool::validate
