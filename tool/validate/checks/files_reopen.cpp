#include <optional>
#include <string>
#include <vector>

#include "host/result_codes.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void filesReopen(Trial& trial) {
    Stage stage(trial);
    forSteadyPictures(trial, stage, [&](Playing& playing) {
        const std::uint32_t format = playing.formats().front();
        const auto frames = playing.someFrames(trial, 3);
        std::vector<std::optional<Picture>> before;
        for (const std::uint32_t frame : frames) {
            before.push_back(playing.picture(frame, format));
        }
        const std::int32_t quiet = playing.clip().quiet();
        const std::int32_t open = playing.clip().reopen().result;
        if (quiet != host::imNoErr || open != host::imNoErr) {
            trial.fail({.call = "imQuietFile, imOpenFile8",
                        .clip = playing.path(),
                        .seen = "results " + std::to_string(quiet) + ", " + std::to_string(open)});
            return;
        }
        for (std::size_t i = 0; i < frames.size(); ++i) {
            const std::string difference = pictureDifference(before[i], playing.picture(frames[i], format));
            if (!difference.empty()) {
                trial.fail({.call = frameCall(frames[i], format) + " behind imQuietFile and imOpenFile8",
                            .clip = playing.path(),
                            .seen = difference});
            }
        }
    });
}

const Registered kFilesReopen({"files.reopen", 3,
                               "A clip that was quieted and opened again shows the same pictures.",
                               "The host does so each time that its user comes back from another program.",
                               filesReopen});

}  // namespace
}  // namespace simhost::tool::validate
