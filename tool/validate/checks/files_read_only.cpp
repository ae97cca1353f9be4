#include <filesystem>
#include <string>

#include "tool/shared/base/output_file.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void filesReadOnly(Trial& trial) {
    namespace fs = std::filesystem;
    Stage stage(trial);
    const std::string path = copyOfClip(trial, stage, "read-only");
    constexpr fs::perms kWriting = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
    fs::permissions(pathFromUtf8(path), kWriting, fs::perm_options::remove);
    if (Playing::open(stage.importer(), path) == nullptr) {
        trial.fail({.call = "imOpenFile8 and imGetInfo8",
                    .clip = path,
                    .seen = "it is refused; with the right to write it is opened"});
    }
    fs::permissions(pathFromUtf8(path), kWriting, fs::perm_options::add);
}

const Registered kFilesReadOnly({"files.read-only", 3, "A file that may only be read opens for reading.",
                                 "Clips lie on archives and on cards that are locked.", filesReadOnly});

}  // namespace
}  // namespace simhost::tool::validate
