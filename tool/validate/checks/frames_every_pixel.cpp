#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "tool/validate/base/check.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

std::vector<Picture> firstPictures(Trial& trial, std::uint8_t poison) {
    HostOptions options = Stage::quiet();
    options.pixelPoison = poison;
    Stage stage(trial, defaultProfile(), options);
    std::vector<Picture> out;
    forSteadyPictures(trial, stage, [&](Playing& playing) {
        for (const std::uint32_t format : playing.formats()) {
            out.push_back(playing.picture(playing.frames() - 1, format).value_or(Picture()));
        }
    });
    return out;
}

void framesEveryPixel(Trial& trial) {
    const auto first = firstPictures(trial, 0xCD);
    const auto second = firstPictures(trial, 0x32);
    for (std::size_t i = 0; i < std::min(first.size(), second.size()); ++i) {
        const std::string difference = pictureDifference(first[i], second[i]);
        if (!difference.empty()) {
            trial.fail({.call = "imGetSourceVideo, the last frame",
                        .seen = difference + ", when the new frame holds other bytes"});
        }
    }
}

const Registered kFramesEveryPixel({"frames.every-pixel", 3, "Every pixel of a frame is written.",
                                    "A new frame holds what was there before: parts of other pictures.",
                                    framesEveryPixel});

}  // namespace
}  // namespace simhost::tool::validate
