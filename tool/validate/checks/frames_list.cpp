#include <algorithm>
#include <string>
#include <vector>

#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

void framesList(Trial& trial) {
    Stage stage(trial);
    forPictures(trial, stage, [&](Playing& playing) {
        std::vector<host::imFrameFormat> wanted;
        for (auto at = playing.formats().rbegin(); at != playing.formats().rend() && wanted.size() < 4;
             ++at) {
            wanted.push_back({0, 0, *at});
        }
        const FrameAnswer answer = playing.clip().getSourceVideo(0, wanted);
        const bool listed =
            answer.frame && std::any_of(wanted.begin(), wanted.end(), [&](const host::imFrameFormat& format) {
                return byValue(format.inPixelFormat) == answer.frame->pixelFormat();
            });
        if (!listed) {
            trial.fail({.call = "imGetSourceVideo with " + std::to_string(wanted.size()) +
                                " formats that are on offer",
                        .field = "imSourceVideoRec.inFrameFormats",
                        .clip = playing.path(),
                        .seen = answer.frame ? std::string("a frame as ") +
                                                   pixelFormatName(answer.frame->pixelFormat())
                                             : "result " + std::to_string(answer.result)});
        }
    });
}

const Registered kFramesList({"frames.list", 4, "Of several formats in a request one is delivered.",
                              "The host can do with any of its list, and with nothing else.", framesList});

}  // namespace
}  // namespace simhost::tool::validate
