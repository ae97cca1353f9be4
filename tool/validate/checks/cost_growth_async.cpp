#include "tool/validate/base/async_frames.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/growth.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void costGrowthAsync(Trial& trial) {
    Stage stage(trial);
    forAsync(trial, stage, [&](Playing& playing, AsyncClip& first) {
        (void)first.close();
        checkGrowth(trial, stage.host(), playing.path(), "imCreateAsyncImporter, aiFlush, aiClose", 200, [&] {
            const AsyncClip async(playing.clip());
            if (async.isOpen()) {
                initiateFrame(playing, async, 0, playing.formats().front());
            }
        });
    });
}

const Registered kCostGrowthAsync({"cost.growth-async", 8,
                                   "Hundreds of asynchronous importers leave the process as large as it was.",
                                   "The host makes one each time that it plays.", costGrowthAsync});

}  // namespace
}  // namespace simhost::tool::validate
