// The files that random sessions play: small AVI files of the kinds that matter to an importer, made in
// memory. Pure; any thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace simhost::tool {

struct SessionClip {
    std::string name;                 ///< "opendml"
    std::vector<std::uint8_t> bytes;  ///< of the file
    bool playable = false;            ///< an importer that knows the codec opens it and shows every frame
    std::uint32_t frames = 0;         ///< of the video; 0 without one
    std::int32_t rate = 25;           ///< `rate` / `scale` frames a second
    std::int32_t scale = 1;           ///<
    std::uint32_t streams = 0;        ///< of any kind
    std::uint32_t channels = 0;       ///< of the first sound; 0 without one
    std::int64_t sampleFrames = 0;    ///< of the first sound
};

/// Always the same ones: the numbers of sessions depend on them.
const std::vector<SessionClip>& sessionClips();

}  // namespace simhost::tool
