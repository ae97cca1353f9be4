#include <filesystem>

#include "tool/shared/base/output_file.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void filesEmpty(Trial& trial) {
    Stage stage(trial);
    const std::string path = copyOfClip(trial, stage, "empty");
    std::filesystem::resize_file(pathFromUtf8(path), 0);
    if (Playing::open(stage.importer(), path) != nullptr) {
        trial.fail({.call = "imOpenFile8 and imGetInfo8",
                    .clip = "a file of no bytes",
                    .seen = "it is opened and described"});
    }
}

const Registered kFilesEmpty({"files.empty", 2, "A file without a byte is refused.",
                              "A recording that failed leaves such files.", filesEmpty});

}  // namespace
}  // namespace simhost::tool::validate
