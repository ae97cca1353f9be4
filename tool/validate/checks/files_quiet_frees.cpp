#include <filesystem>
#include <string>

#include "tool/shared/base/output_file.h"
#include "tool/shared/base/process_usage.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void filesQuietFrees(Trial& trial) {
    Stage stage(trial);
    const std::string path = copyOfClip(trial, stage);
    const auto playing = Playing::open(stage.importer(), path);
    const std::uint64_t open = processUsage().handles;
    (void)playing->clip().quiet();
    const std::string moved = trial.freshPath("moved");
    std::error_code error;
    std::filesystem::rename(pathFromUtf8(path), pathFromUtf8(moved), error);
    if (error) {
        trial.fail({.call = "imQuietFile", .seen = "the file cannot be moved: " + error.message()});
    } else if (processUsage().handles > open) {
        trial.fail({.call = "imQuietFile", .seen = "more handles are open than before"});
    }
}

const Registered kFilesQuietFrees(
    {"files.quiet-frees", 4, "A file is free after imQuietFile.",
     "The host sends it when its user turns to another program, who may work on the file there.",
     filesQuietFrees});

}  // namespace
}  // namespace simhost::tool::validate
