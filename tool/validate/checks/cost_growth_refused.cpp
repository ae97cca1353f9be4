#include "tool/validate/base/check.h"
#include "tool/validate/base/growth.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void costGrowthRefused(Trial& trial) {
    Stage stage(trial);
    forClips(trial, stage, [&](Playing& playing) {
        checkGrowth(trial, stage.host(), playing.path(), "imOpenFile8, refused", 1000,
                    [&] { const Clip refused(stage.importer(), "no such file"); });
    });
}

const Registered kCostGrowthRefused({"cost.growth-refused", 9,
                                     "A thousand refusals leave the process as large as it was.",
                                     "The host asks every importer about every file.", costGrowthRefused});

}  // namespace
}  // namespace simhost::tool::validate
