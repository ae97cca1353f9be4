#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

struct Last {
    std::string call;
    std::string clip;
    Picture picture;
};

std::vector<Last> lastPictures(Trial& trial, std::uint8_t poison) {
    HostOptions options = Stage::quiet();
    options.pixelPoison = poison;
    Stage stage(trial, defaultProfile(), options);
    std::vector<Last> out;
    forSteadyPictures(trial, stage, [&](Playing& playing) {
        for (const std::uint32_t format : playing.formats()) {
            const std::uint32_t frame = playing.frames() - 1;
            out.push_back({frameCall(frame, format), playing.path(),
                           playing.picture(frame, format).value_or(Picture())});
        }
    });
    return out;
}

void framesEveryPixel(Trial& trial) {
    const auto first = lastPictures(trial, 0xCD);
    const auto second = lastPictures(trial, 0x32);
    for (std::size_t i = 0; i < std::min(first.size(), second.size()); ++i) {
        const std::string difference = pictureDifference(first[i].picture, second[i].picture);
        if (!difference.empty()) {
            trial.fail({.call = first[i].call,
                        .clip = first[i].clip,
                        .seen = difference + ", when the new frame holds other bytes"});
        }
    }
}

const Registered kFramesEveryPixel({"frames.every-pixel", 3, "Every pixel of a frame is written.",
                                    "A new frame holds what was there before: parts of other pictures.",
                                    framesEveryPixel});

}  // namespace
}  // namespace simhost::tool::validate
