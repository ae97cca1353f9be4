// The clips that are validated with when none is named: a set of small AVI files, of which an importer opens
// those that it knows. Main thread only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tool/validate/base/trial.h"

namespace simhost::tool::validate {

struct MadeVideo {
    std::string tag;  ///< four characters, of the coding
    std::uint16_t bitsPerPixel = 24;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::uint32_t rate = 25;  ///< `rate` / `scale` frames a second
    std::uint32_t scale = 1;
    std::vector<std::vector<std::uint8_t>> frames;  ///< coded
};

struct MadeSound {
    std::uint16_t channels = 0;  ///< 0: no sound
    std::uint32_t rate = 48000;
    std::uint16_t bits = 16;
};

/// A whole AVI file with an index: a chunk of sound behind each frame.
std::vector<std::uint8_t> madeAvi(const MadeVideo& video, const MadeSound& sound);

/// Writes the set into the folder. Throws ToolError.
std::vector<ClipFile> makeClips(const std::string& folderUtf8);

}  // namespace simhost::tool::validate
