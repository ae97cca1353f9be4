#include <fstream>

#include "tool/shared/base/output_file.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void filesSharedReading(Trial& trial) {
    Stage stage(trial);
    forClips(trial, stage, [&](Playing& playing) {
        std::ifstream file(pathFromUtf8(playing.path()), std::ios::binary);
        if (!file || file.get() == std::ifstream::traits_type::eof()) {
            trial.fail({.call = "imOpenFile8",
                        .clip = playing.path(),
                        .seen = "another program cannot read the file meanwhile"});
        }
    });
}

const Registered kFilesSharedReading({"files.shared-reading", 3,
                                      "Others can read a file while the importer has it open.",
                                      "The host itself does, and shows the same file twice.",
                                      filesSharedReading});

}  // namespace
}  // namespace simhost::tool::validate
