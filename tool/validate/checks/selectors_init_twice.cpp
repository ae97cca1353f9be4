#include <string>

#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void selectorsInitTwice(Trial& trial) {
    Stage stage(trial);
    const std::int32_t result = stage.importer().init().result;
    if (!isStarted(result)) {
        trial.fail({.call = "imInit, the second", .seen = "result " + std::to_string(result)});
    }
    forClips(trial, stage, [](Playing&) {});
}

const Registered kSelectorsInitTwice(
    {"selectors.init-twice", 4, "imInit may come a second time.",
     "The host sends it again when it has loaded the plug-in for another of its processes' tasks.",
     selectorsInitTwice});

}  // namespace
}  // namespace simhost::tool::validate
