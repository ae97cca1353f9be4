#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tool/shared/base/output_file.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/damaged.h"

namespace simhost::tool::validate {
namespace {

void filesTruncated(Trial& trial) {
    Stage stage(trial);
    const std::string path = copyOfClip(trial, stage, "cut");
    const auto size = static_cast<std::uint64_t>(std::filesystem::file_size(pathFromUtf8(path)));
    std::vector<std::uint64_t> lengths = {size - 1, size / 2, 4, 1};
    for (int i = 0; i < 12; ++i) {
        lengths.push_back(trial.draw(i < 6 ? std::min<std::uint64_t>(size, 4096) : size));
    }
    std::sort(lengths.rbegin(), lengths.rend());
    for (const std::uint64_t length : lengths) {
        std::filesystem::resize_file(pathFromUtf8(path), length);
        playDamaged(trial, stage, path,
                    "a clip cut to " + std::to_string(length) + " of " + std::to_string(size) + " bytes");
    }
}

const Registered kFilesTruncated({"files.truncated", 5,
                                  "A clip that was cut off anywhere is refused, or played as far as it goes.",
                                  "Recordings end with the battery.", filesTruncated});

}  // namespace
}  // namespace simhost::tool::validate
