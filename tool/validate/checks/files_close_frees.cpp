#include <filesystem>
#include <string>

#include "tool/shared/base/output_file.h"
#include "tool/shared/base/process_usage.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void filesCloseFrees(Trial& trial) {
    Stage stage(trial);
    const std::string path = copyOfClip(trial, stage);
    { const auto warm = Playing::open(stage.importer(), path); }
    const std::uint64_t before = processUsage().handles;
    for (int i = 0; i < 8; ++i) {
        const auto playing = Playing::open(stage.importer(), path);
        if (playing != nullptr) {
            (void)playing->showsPictures();
        }
    }
    const std::uint64_t after = processUsage().handles;
    if (after >= before + 8) {
        trial.fail({.call = "imCloseFile, eight times",
                    .seen = std::to_string(after - before) + " more handles are open"});
    }
    std::error_code error;
    if (!std::filesystem::remove(pathFromUtf8(path), error)) {
        trial.fail({.call = "imCloseFile", .seen = "the file cannot be deleted: " + error.message()});
    }
}

const Registered kFilesCloseFrees({"files.close-frees", 2, "A file is free after imCloseFile.",
                                   "The user of the host moves or deletes it next.", filesCloseFrees});

}  // namespace
}  // namespace simhost::tool::validate
