#include <string>

#include "tool/shared/base/number_text.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"
#include "tool/validate/base/timing.h"

namespace simhost::tool::validate {
namespace {

void costOpen(Trial& trial) {
    Stage stage(trial);
    for (const ClipFile& clip : trial.setting().clips) {
        bool opened = false;
        const double seconds =
            quickestSeconds(3, [&] { opened = Playing::open(stage.importer(), clip.path) != nullptr; });
        if (opened && seconds > 1) {
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
