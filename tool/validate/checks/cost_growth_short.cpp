#include "tool/validate/base/check.h"
#include "tool/validate/base/growth.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void costGrowthShort(Trial& trial) {
    Stage stage(trial);
    forClips(trial, stage, [&](Playing& playing) {
        checkGrowth(trial, stage.host(), playing.path(), "imOpenFile8, imGetInfo8, imCloseFile", 100,
                    [&] { (void)Playing::open(stage.importer(), playing.path()); });
    });
}

const Registered kCostGrowthShort({"cost.growth-short", 4,
                                   "A hundred openings leave the process as large as it was.",
                                   "The host runs for days.", costGrowthShort});

}  // namespace
}  // namespace simhost::tool::validate
