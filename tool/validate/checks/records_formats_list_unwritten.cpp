#include <array>
#include <cstring>

#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void recordsFormatsListUnwritten(Trial& trial) {
    Stage stage(trial);
    forPictures(trial, stage, [&](Playing& playing) {
        host::imFrameFormat wanted[] = {{0, 0, playing.formats().front()}, {0, 0, playing.formats().back()}};
        const auto before = std::to_array(wanted);
        (void)playing.clip().getSourceVideo(0, wanted);
        if (std::memcmp(before.data(), wanted, sizeof wanted) != 0) {
            trial.fail({.call = frameCall(0, before[0].inPixelFormat),
                        .field = "imSourceVideoRec.inFrameFormats",
                        .clip = playing.path(),
                        .seen = "an entry of the list was written"});
        }
    });
}

const Registered kRecordsFormatsListUnwritten({"records.formats-list-unwritten", 4,
                                               "The list of formats in a request for a frame is only read.",
                                               "It is the host's own, and the next request is made of it.",
                                               recordsFormatsListUnwritten});

}  // namespace
}  // namespace simhost::tool::validate
