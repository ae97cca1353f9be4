// Sound tracks as people count them: from 1, in the order of the file, usable or not. The host counts the
// same tracks from 0. Every command names tracks in this way. Main thread only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "simhost/clip.h"

namespace simhost::tool {

struct SoundTrack {
    std::int32_t number = 1;  ///< from 1; the host's index is one less
    std::string stream;       ///< its number among all streams of the file
    std::string problem;      ///< why it cannot be used; empty when it can
};

inline std::int32_t soundTrack(std::int32_t hostIndex) noexcept {
    return hostIndex + 1;
}
/// "sound track 2"
std::string soundTrackName(std::int32_t number);

/// All tracks that the plug-in's description of a file names.
std::vector<SoundTrack> soundTracks(std::string_view description);

/// Throws a ToolError that names the track unless it is there and usable: kinds "no-sound-track",
/// "unusable-sound-track". `number` is from 1.
void requireSoundTrack(const Clip& clip, const std::string& path, std::int32_t number);

}  // namespace simhost::tool
