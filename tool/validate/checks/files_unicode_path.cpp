#include <string>

#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void filesUnicodePath(Trial& trial) {
    Stage stage(trial);
    const std::string path = copyOfClip(trial, stage,
                                        "Gr\xC3\xBC\xC3\x9F"
                                        "e \xE6\x98\xA0\xE5\x83\x8F \xCE\xBB \xF0\x9F\x8E\x9E");
    if (Playing::open(stage.importer(), path) == nullptr) {
        trial.fail({.call = "imOpenFile8 and imGetInfo8",
                    .clip = path,
                    .seen = "it is refused; under a plain name it is opened"});
    }
}

const Registered kFilesUnicodePath({"files.unicode-path", 3, "A file opens whatever letters its path has.",
                                    "Paths of the host are UTF-16: users name files in their own language.",
                                    filesUnicodePath});

}  // namespace
}  // namespace simhost::tool::validate
