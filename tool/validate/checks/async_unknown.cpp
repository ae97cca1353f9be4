#include <string>
#include <vector>

#include "host/result_codes.h"
#include "tool/validate/base/async_frames.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void asyncUnknown(Trial& trial) {
    Stage stage(trial);
    forSteadyAsync(trial, stage, [&](Playing& playing, AsyncClip& async) {
        for (const std::int32_t selector : {-1, 100, 0x7FFFFFFF}) {
            std::vector<std::uint8_t> record(4096, 0);
            const std::int32_t result = async.call(selector, record.data());
            if (result != host::aiUnsupported) {
                trial.fail({.call = "selector " + std::to_string(selector) + " of the asynchronous entry",
                            .clip = playing.path(),
                            .seen = "result " + std::to_string(result)});
            }
        }
    });
}

const Registered kAsyncUnknown(
    {"async.unknown", 5,
     "A selector that the asynchronous entry does not know is answered with aiUnsupported.",
     "Later hosts have more of them.", asyncUnknown});

}  // namespace
}  // namespace simhost::tool::validate
