#include "tool/shared/media/sound_tracks.h"

#include <algorithm>

#include "tool/shared/base/number_text.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/media/media_facts.h"

namespace simhost::tool {

std::string soundTrackName(std::int32_t number) {
    return "sound track " + std::to_string(number);
}

std::vector<SoundTrack> soundTracks(std::string_view description) {
    constexpr std::string_view kStream = "Audio stream ";
    const std::vector<UnusableSound> unusable = unusableSounds(description);
    std::vector<SoundTrack> out;
    while (!description.empty()) {
        const std::string_view line = description.substr(0, description.find('\n'));
        description.remove_prefix(std::min(line.size() + 1, description.size()));
        if (!line.starts_with(kStream)) {
            continue;
        }
        const std::string_view rest = line.substr(kStream.size());
        SoundTrack track;
        track.number = static_cast<std::int32_t>(out.size()) + 1;
        track.stream = rest.substr(0, rest.find(':'));
        const auto bad = std::find_if(unusable.begin(), unusable.end(),
                                      [&track](const auto& sound) { return sound.stream == track.stream; });
        if (bad != unusable.end()) {
            track.problem = bad->reason;
        }
        out.push_back(std::move(track));
    }
    return out;
}

void requireSoundTrack(const Clip& clip, const std::string& path, std::int32_t number) {
    constexpr std::int32_t kMostText = 1 << 20;
    const auto tracks = soundTracks(clip.analysis(kMostText).text);
    const auto track = std::find_if(tracks.begin(), tracks.end(),
                                    [number](const SoundTrack& t) { return t.number == number; });
    if (track == tracks.end()) {
        throw ToolError(kFailed, "'" + path + "' has no " + soundTrackName(number),
                        tracks.empty() ? "the file has no sound"
                                       : "it has " + counted(tracks.size(), "sound track", "sound tracks") +
                                             ", counted from 1",
                        "no-sound-track");
    }
    if (!track->problem.empty()) {
        throw ToolError(kFailed,
                        soundTrackName(number) + " of '" + path + "' (stream " + track->stream +
                            " of the file) cannot be used: " + track->problem,
                        "convert it to uncompressed PCM", "unusable-sound-track");
    }
}

}  // namespace simhost::tool
