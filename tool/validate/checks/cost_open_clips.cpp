#include <memory>
#include <string>
#include <vector>

#include "tool/shared/base/number_text.h"
#include "tool/shared/base/process_usage.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"
#include "tool/validate/base/timing.h"

namespace simhost::tool::validate {
namespace {

void costOpenClips(Trial& trial) {
    constexpr std::size_t kClips = 30;
    constexpr double kMost = 8.0 * 1024 * 1024;
    Stage stage(trial);
    forClips(trial, stage, [&](Playing& playing) {
        std::vector<std::unique_ptr<Playing>> open;
        open.push_back(Playing::open(stage.importer(), playing.path()));
        const std::uint64_t before = processUsage().heapBytes;
        for (std::size_t i = 0; i < kClips; ++i) {
            open.push_back(Playing::open(stage.importer(), playing.path()));
        }
        const double each =
            (static_cast<double>(processUsage().heapBytes) - static_cast<double>(before)) / kClips;
        if (each > kMost) {
            trial.warn({.call = "imOpenFile8, " + std::to_string(kClips) + " at once",
                        .clip = playing.path(),
                        .seen = bytesText(each) + " each"});
        }
    });
}

const Registered kCostOpenClips({"cost.open-clips", 6,
                                 "An open clip takes a few megabytes of memory at most.",
                                 "A project has hundreds of clips open.", costOpenClips});

}  // namespace
}  // namespace simhost::tool::validate
