#include <chrono>
#include <string>

#include "tool/shared/base/number_text.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void costOpen(Trial& trial) {
    Stage stage(trial);
    for (const ClipFile& clip : trial.setting().clips) {
        const auto begin = std::chrono::steady_clock::now();
        const auto playing = Playing::open(stage.importer(), clip.path);
        const double seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
        if (playing != nullptr && seconds > 1) {
            trial.warn({.call = "imOpenFile8 and imGetInfo8",
                        .clip = clip.path,
                        .seen = decimalText(seconds, 2) + " s"});
        }
    }
    forClips(trial, stage, [](Playing&) {});
}

const Registered kCostOpen({"cost.open", 3, "A clip opens and is described within a second.",
                            "A project has hundreds of them, and its user waits.", costOpen});

}  // namespace
}  // namespace simhost::tool::validate
