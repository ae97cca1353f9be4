#include <fstream>
#include <string>

#include "tool/shared/base/output_file.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void filesForeign(Trial& trial) {
    Stage stage(trial);
    const std::string path = copyOfClip(trial, stage, "foreign");
    std::string bytes(20000, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(trial.draw(256));
    }
    std::ofstream(pathFromUtf8(path), std::ios::binary) << bytes;
    if (Playing::open(stage.importer(), path) != nullptr) {
        trial.fail({.call = "imOpenFile8 and imGetInfo8",
                    .clip = "a file of bytes drawn by lot",
                    .seen = "it is opened and described"});
    }
}

const Registered kFilesForeign(
    {"files.foreign", 2, "A file that is not of the importer's format is refused.",
     "The host asks several importers for one file, and takes the first that opens it.", filesForeign});

}  // namespace
}  // namespace simhost::tool::validate
