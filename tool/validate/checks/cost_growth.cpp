#include "tool/validate/base/check.h"
#include "tool/validate/base/growth.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void costGrowth(Trial& trial) {
    Stage stage(trial);
    forClips(trial, stage, [&](Playing& playing) {
        checkGrowth(trial, stage.host(), playing.path(), "imOpenFile8, imGetInfo8, imCloseFile", 1000,
                    [&] { (void)Playing::open(stage.importer(), playing.path()); });
    });
}

const Registered kCostGrowth({"cost.growth", 10, "A thousand openings leave the process as large as it was.",
                              "The host runs for days.", costGrowth});

}  // namespace
}  // namespace simhost::tool::validate
