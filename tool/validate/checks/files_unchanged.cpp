#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

#include "simhost/session.h"
#include "tool/shared/base/output_file.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

std::uint64_t fileHash(const std::string& path) {
    std::ifstream file(pathFromUtf8(path), std::ios::binary);
    std::vector<char> block(1 << 16);
    std::uint64_t hash = 0;
    while (file.read(block.data(), static_cast<std::streamsize>(block.size())) || file.gcount() > 0) {
        hash = hashBytes(block.data(), static_cast<std::size_t>(file.gcount()), hash + 1);
    }
    return hash;
}

void filesUnchanged(Trial& trial) {
    Stage stage(trial);
    const std::string path = copyOfClip(trial, stage);
    const std::uint64_t before = fileHash(path);
    SessionOptions options;
    options.pathUtf8 = path;
    options.initAndShutdown = false;
    options.mostFormats = 1;
    trial.phase("standard session", [&] { (void)runSession(stage.importer(), options); });
    if (fileHash(path) != before) {
        trial.fail({.call = "a standard session", .clip = path, .seen = "the file has other bytes"});
    }
}

const Registered kFilesUnchanged({"files.unchanged", 2,
                                  "Playing a clip leaves its file as it is, to the byte.",
                                  "It is the user's only recording.", filesUnchanged});

}  // namespace
}  // namespace simhost::tool::validate
