#include "host/result_codes.h"
#include "tool/validate/base/async_frames.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void asyncTwo(Trial& trial) {
    Stage stage(trial);
    forSteadyAsync(trial, stage, [&](Playing& playing, AsyncClip& first) {
        AsyncClip second(playing.clip());
        if (!second.isOpen()) {
            Trial::skip("the plug-in makes one asynchronous importer of a clip at a time");
        }
        const std::uint32_t format = playing.formats().front();
        const auto frames = playing.someFrames(trial, 4);
        for (const std::uint32_t frame : frames) {
            initiateFrame(playing, first, frame, format);
            initiateFrame(playing, second, playing.frames() - 1 - frame, format);
        }
        (void)first.flush();
        for (const std::uint32_t frame : frames) {
            compareAsyncFrame(trial, playing, second, playing.frames() - 1 - frame, format,
                              ", one of two importers");
        }
        (void)second.flush();
        (void)second.close();
        initiateFrame(playing, first, 0, format);
        compareAsyncFrame(trial, playing, first, 0, format, " behind the aiClose of another importer");
    });
}

const Registered kAsyncTwo({"async.two", 5,
                            "Two asynchronous importers of one clip do not disturb each other.",
                            "The host makes one for each place where it plays the clip.", asyncTwo});

}  // namespace
}  // namespace simhost::tool::validate
