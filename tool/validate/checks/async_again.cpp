#include <string>

#include "host/result_codes.h"
#include "tool/validate/base/async_frames.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void asyncAgain(Trial& trial) {
    Stage stage(trial);
    forSteadyAsync(trial, stage, [&](Playing& playing, AsyncClip& first) {
        (void)first.flush();
        (void)first.close();
        for (int round = 0; round < 3; ++round) {
            const AsyncClip again(playing.clip());
            if (!again.isOpen()) {
                trial.fail({.call = "imCreateAsyncImporter behind aiClose",
                            .clip = playing.path(),
                            .seen = "result " + std::to_string(again.creation().result)});
                return;
            }
            compareAsyncFrame(trial, playing, again, 0, playing.formats().front(), " of a new importer");
        }
    });
}

const Registered kAsyncAgain({"async.again", 3,
                              "An asynchronous importer can be made anew for a clip after aiClose.",
                              "The host makes one for each time that it plays.", asyncAgain});

}  // namespace
}  // namespace simhost::tool::validate
