#include "tool/validate/base/check.h"
#include "tool/validate/base/growth.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void costGrowthFrames(Trial& trial) {
    Stage stage(trial);
    forPictures(trial, stage, [&](Playing& playing) {
        const double pixels =
            static_cast<double>(playing.info().vidInfo.imageWidth) * playing.info().vidInfo.imageHeight;
        const int rounds = pixels > 1e5 ? 100 : 400;
        checkGrowth(trial, stage.host(), playing.path(), "imGetSourceVideo", rounds,
                    [&] { (void)playing.picture(static_cast<std::uint32_t>(trial.draw(playing.frames()))); });
    });
}

const Registered kCostGrowthFrames({"cost.growth-frames", 8,
                                    "Hundreds of frames leave the process as large as it was.",
                                    "The host shows a hundred thousand a day.", costGrowthFrames});

}  // namespace
}  // namespace simhost::tool::validate
