#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include "tool/shared/base/output_file.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/damaged.h"

namespace simhost::tool::validate {
namespace {

void filesDamaged(Trial& trial) {
    Stage stage(trial);
    const std::string path = copyOfClip(trial, stage, "damaged");
    const auto size = static_cast<std::uint64_t>(std::filesystem::file_size(pathFromUtf8(path)));
    for (int round = 0; round < 24; ++round) {
        std::fstream file(pathFromUtf8(path), std::ios::binary | std::ios::in | std::ios::out);
        // Headers stand at the beginning, and what is wrong in them matters most.
        const std::uint64_t at = trial.draw(round % 3 == 2 ? size : std::min<std::uint64_t>(size, 600));
        file.seekg(static_cast<std::streamoff>(at));
        const int former = file.get();
        file.clear();
        file.seekp(static_cast<std::streamoff>(at));
        file.put(static_cast<char>(trial.draw(2) == 0 ? trial.draw(256) : 0xFF));
        file.close();
        playDamaged(trial, stage, path, "a clip with another byte at " + std::to_string(at));
        file.open(pathFromUtf8(path), std::ios::binary | std::ios::in | std::ios::out);
        file.seekp(static_cast<std::streamoff>(at));
        file.put(static_cast<char>(former));
    }
}

const Registered kFilesDamaged(
    {"files.damaged", 6, "A clip with wrong bytes is refused, or played as far as it can be.",
     "Disks and cards lose bytes, and a file from a stranger may have been made to do harm.", filesDamaged});

}  // namespace
}  // namespace simhost::tool::validate
