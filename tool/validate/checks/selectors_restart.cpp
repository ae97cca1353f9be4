#include <string>

#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void selectorsRestart(Trial& trial) {
    Stage stage(trial);
    forClips(trial, stage, [](Playing&) {});
    (void)stage.importer().shutdown();
    const std::int32_t result = stage.importer().init().result;
    if (!isStarted(result)) {
        trial.fail({.call = "imInit behind imShutdown", .seen = "result " + std::to_string(result)});
        return;
    }
    for (const ClipFile& clip : trial.setting().clips) {
        if (Playing::open(stage.importer(), clip.path) != nullptr) {
            return;
        }
    }
    trial.fail({.call = "imOpenFile8 behind imShutdown and imInit", .seen = "no clip opens any more"});
}

const Registered kSelectorsRestart({"selectors.restart", 4,
                                    "imInit after imShutdown starts the importer anew.",
                                    "The host does so without unloading the module in between.",
                                    selectorsRestart});

}  // namespace
}  // namespace simhost::tool::validate
