#include <string>

#include "host/result_codes.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void selectorsStreamsEnd(Trial& trial) {
    Stage stage(trial);
    forClips(trial, stage, [&](Playing& playing) {
        const auto streams = playing.clip().walkStreams();
        if (streams.back().answer.result == host::imIterateStreams) {
            trial.fail({.call = "imGetInfo8, stream " + std::to_string(streams.size()),
                        .field = "imFileInfoRec8.streamIdx",
                        .clip = playing.path(),
                        .seen = "still another stream"});
            return;
        }
        const std::int32_t beyond = static_cast<std::int32_t>(streams.size()) + 5;
        const std::int32_t result = playing.clip().getInfo(beyond).result;
        if (streams.size() > 1 && (result == host::imNoErr || result == host::imIterateStreams)) {
            trial.fail({.call = "imGetInfo8, stream " + std::to_string(beyond),
                        .field = "imFileInfoRec8.streamIdx",
                        .clip = playing.path(),
                        .seen = "result " + std::to_string(result) + " though there are " +
                                std::to_string(streams.size())});
        }
    });
}

const Registered kSelectorsStreamsEnd(
    {"selectors.streams-end", 2,
     "imGetInfo8 ends the list of streams, and refuses a stream that is not there.",
     "The host asks for one stream after the other, and makes a track of each.", selectorsStreamsEnd});

}  // namespace
}  // namespace simhost::tool::validate
