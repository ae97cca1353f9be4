#include "host/result_codes.h"
#include "tool/validate/base/async_frames.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void asyncSamePixels(Trial& trial) {
    Stage stage(trial);
    forAsync(trial, stage, [&](Playing& playing, AsyncClip& async) {
        for (const std::uint32_t format : playing.formats()) {
            const auto frames = playing.someFrames(trial, 3);
            for (const std::uint32_t frame : frames) {
                initiateFrame(playing, async, frame, format);
            }
            for (const std::uint32_t frame : frames) {
                compareAsyncFrame(trial, playing, async, frame, format, "");
            }
        }
    });
}

const Registered kAsyncSamePixels(
    {"async.same-pixels", 2, "A frame comes the same by the asynchronous importer as by imGetSourceVideo.",
     "The host plays by the one and exports by the other.", asyncSamePixels});

}  // namespace
}  // namespace simhost::tool::validate
