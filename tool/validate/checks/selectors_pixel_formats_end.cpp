#include <string>

#include "host/result_codes.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void selectorsPixelFormatsEnd(Trial& trial) {
    Stage stage(trial);
    forClips(trial, stage, [&](Playing& playing) {
        if (playing.frames() == 0) {
            return;
        }
        const PixelFormats offered = playing.clip().pixelFormats();
        const bool refused = offered.formats.empty() && offered.lastResult == host::imUnsupported;
        if (offered.lastResult != host::imBadFormatIndex && !refused) {
            trial.fail({.call = "imGetIndPixelFormat, index " + std::to_string(offered.formats.size()),
                        .clip = playing.path(),
                        .seen = "result " + std::to_string(offered.lastResult)});
        }
    });
}

const Registered kSelectorsPixelFormatsEnd(
    {"selectors.pixel-formats-end", 1,
     "imGetIndPixelFormat answers imBadFormatIndex behind the last pixel format.",
     "The host counts up until it hears that.", selectorsPixelFormatsEnd});

}  // namespace
}  // namespace simhost::tool::validate
