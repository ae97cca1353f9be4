#include "host/result_codes.h"
#include "tool/validate/base/async_frames.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void asyncClipClosedFirst(Trial& trial) {
    Stage stage(trial);
    forSteadyAsync(trial, stage, [&](Playing& playing, AsyncClip& async) {
        for (const std::uint32_t frame : playing.someFrames(trial, 4)) {
            initiateFrame(playing, async, frame, playing.formats().front());
        }
        (void)playing.clip().close();
        (void)async.flush();
        (void)async.close();
    });
}

const Registered kAsyncClipClosedFirst({"async.clip-closed-first", 5,
                                        "The clip may be closed before its asynchronous importer is.",
                                        "The host owns the two apart.", asyncClipClosedFirst});

}  // namespace
}  // namespace simhost::tool::validate
