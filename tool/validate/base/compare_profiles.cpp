#include "tool/validate/base/compare_profiles.h"

#include <algorithm>
#include <vector>

#include "simhost/session.h"
#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {
namespace {

struct Shown {
    std::string call;
    std::string clip;
    std::uint64_t hash;
};

std::vector<Shown> shownUnder(Trial& trial, const HostProfile& profile) {
    // The steadiness of pictures is asked of the default host, so that both lists have the same entries.
    Stage stage(trial, profile);
    std::vector<Shown> out;
    forClips(trial, stage, [&](Playing& playing) {
        if (playing.showsPictures() && playing.picture(0) == playing.picture(0)) {
            std::vector<std::uint32_t> frames = {0, playing.frames() / 2, playing.frames() - 1};
            frames.erase(std::unique(frames.begin(), frames.end()), frames.end());
            for (const std::uint32_t format : playing.formats()) {
                for (const std::uint32_t frame : frames) {
                    const Picture picture = playing.picture(frame, format).value_or(Picture());
                    out.push_back({frameCall(frame, format), playing.path(),
                                   hashBytes(picture.data(), picture.size())});
                }
            }
        }
        if (playing.sound()) {
            const auto size =
                static_cast<std::uint32_t>(std::min<std::uint64_t>(playing.sound()->length, 1000));
            const AudioAnswer answer = playing.clip().importAudio(0, size, playing.sound()->channels);
            std::uint64_t hash = 0;
            for (const auto& channel : answer.channels) {
                hash = hashBytes(channel.data(), channel.size() * sizeof(float), hash + 1);
            }
            out.push_back({"imImportAudio7, the first " + std::to_string(size) + " sample frames",
                           playing.path(), hash});
        }
    });
    return out;
}

}  // namespace

void compareWithProfile(Trial& trial, const std::string& profile, const std::string& what) {
    const std::vector<Shown> usual = shownUnder(trial, defaultProfile());
    std::vector<Shown> other;
    try {
        other = shownUnder(trial, *findProfile(profile));
    } catch (const Skipped&) {
        // It starts, or opens, nothing there: everything is missing.
        other.clear();
    }
    if (usual.empty()) {
        Trial::skip("the plug-in shows and plays nothing steadily");
    }
    for (const Shown& shown : usual) {
        const auto same = std::find_if(other.begin(), other.end(), [&](const Shown& candidate) {
            return candidate.call == shown.call && candidate.clip == shown.clip;
        });
        if (same == other.end()) {
            trial.fail({.call = shown.call + ", " + what,
                        .clip = shown.clip,
                        .seen = "nothing; under the host of today there is"});
        } else if (same->hash != shown.hash) {
            trial.fail({.call = shown.call + ", " + what,
                        .clip = shown.clip,
                        .seen = "not the same as under the host of today"});
        }
    }
}

}  // namespace simhost::tool::validate
