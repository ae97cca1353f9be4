#include <string>

#include "tool/validate/base/check.h"
#include "tool/validate/base/stage.h"

namespace simhost::tool::validate {
namespace {

void moduleLoadsAgain(Trial& trial) {
    { const Stage first(trial); }
    for (int round = 2; round <= 5; ++round) {
        try {
            const Stage again(trial);
        } catch (const Skipped& skipped) {
            trial.fail({.call = "beginning number " + std::to_string(round), .seen = skipped.what()});
            return;
        }
    }
}

const Registered kModuleLoadsAgain(
    {"module.loads-again", 2,
     "The module can be loaded, started, shut down and unloaded several times in one process.",
     "The host does so when it looks through its plug-ins again.", moduleLoadsAgain});

}  // namespace
}  // namespace simhost::tool::validate
