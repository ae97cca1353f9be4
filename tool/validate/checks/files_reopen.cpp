#include <string>

#include "host/result_codes.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/known_frames.h"

namespace simhost::tool::validate {
namespace {

void filesReopen(Trial& trial) {
    Stage stage(trial);
    forSteadyPictures(trial, stage, [&](Playing& playing) {
        const KnownFrames known(trial, playing, 3);
        const std::int32_t quiet = playing.clip().quiet();
        const std::int32_t open = playing.clip().reopen().result;
        if (quiet != host::imNoErr || open != host::imNoErr) {
            trial.fail({.call = "imQuietFile, imOpenFile8",
                        .clip = playing.path(),
                        .seen = "results " + std::to_string(quiet) + ", " + std::to_string(open)});
            return;
        }
        for (std::size_t i = 0; i < known.count(); ++i) {
            (void)known.isShown(trial, playing, i, " behind imQuietFile and imOpenFile8");
        }
    });
}

const Registered kFilesReopen({"files.reopen", 3,
                               "A clip that was quieted and opened again shows the same pictures.",
                               "The host does so each time that its user comes back from another program.",
                               filesReopen});

}  // namespace
}  // namespace simhost::tool::validate
