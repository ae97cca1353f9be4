#include <filesystem>
#include <fstream>
#include <string>

#include "tool/shared/base/output_file.h"
#include "tool/shared/base/process_usage.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void filesRefusalFrees(Trial& trial) {
    Stage stage(trial);
    const std::string path = copyOfClip(trial, stage, "refused");
    std::ofstream(pathFromUtf8(path), std::ios::binary) << "no clip of any kind";
    (void)Playing::open(stage.importer(), path);
    const std::uint64_t before = processUsage().handles;
    for (int i = 0; i < 8; ++i) {
        // One that looks into the file only when it is asked for a description is told to close it.
        (void)Playing::open(stage.importer(), path);
    }
    const std::uint64_t after = processUsage().handles;
    if (after >= before + 8) {
        trial.fail({.call = "imOpenFile8, eight times refused",
                    .seen = std::to_string(after - before) + " more handles are open"});
    }
    std::error_code error;
    if (!std::filesystem::remove(pathFromUtf8(path), error)) {
        trial.fail(
            {.call = "imOpenFile8, refused", .seen = "the file cannot be deleted: " + error.message()});
    }
}

const Registered kFilesRefusalFrees(
    {"files.refusal-frees", 3, "A file that was refused is free at once.",
     "The host hands it to the next importer, and its user may want to delete it.", filesRefusalFrees});

}  // namespace
}  // namespace simhost::tool::validate
