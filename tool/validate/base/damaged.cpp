#include "tool/validate/base/damaged.h"

#include <algorithm>

namespace simhost::tool::validate {

void playDamaged(Trial& trial, Stage& stage, const std::string& path, const std::string& what) {
    constexpr std::uint32_t kMostPixels = 1u << 24;
    const std::size_t before = stage.host().balance().frames;
    if (const auto playing = Playing::open(stage.importer(), path)) {
        (void)playing->clip().walkStreams();
        (void)playing->clip().getInfo(0);
        const host::imFileInfoRec8& info = playing->info();
        const std::int64_t pixels = std::int64_t{info.vidInfo.imageWidth} * info.vidInfo.imageHeight;
        if (pixels > 0 && pixels <= kMostPixels && playing->frames() > 0 && !playing->formats().empty()) {
            for (const std::uint32_t frame : playing->someFrames(trial, 3)) {
                (void)playing->picture(frame);
            }
        }
        if (playing->sound()) {
            const auto last = static_cast<std::int64_t>(playing->sound()->length) - 10;
            (void)playing->clip().importAudio(0, 100, playing->sound()->channels);
            (void)playing->clip().importAudio(std::max<std::int64_t>(last, 0), 100,
                                              playing->sound()->channels);
        }
    }
    if (stage.host().balance().frames > before) {
        trial.fail({.call = "playing " + what, .clip = path, .seen = "a frame was left with the plug-in"});
    }
}

}  // namespace simhost::tool::validate
