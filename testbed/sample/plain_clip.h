// The sample's own file format, made to be read in one look: a header, frames as they are shown, sound as
// floats.
//
//   offset  0  8 bytes  "PLAINCLP"
//           8  u32      width, then u32 height, in pixels, 1 to 16384
//          16  u32      number of frames, at least 1
//          20  u32      R and then u32 D: R frames in D seconds, 1 to 1000000
//          28  u32      channels of sound, 0 to 2
//          32  u32      sample frames a second
//          36  u32      number of sample frames
//          40           the frames: rows from the top, 4 bytes a pixel (blue, green, red, alpha)
//                       then the sound: 32-bit floats, the channels of a sample frame together
//
// Numbers are little-endian. A file that is shorter than this makes it is damaged.
#pragma once

#include <cstdint>

#include "input_file.h"

namespace sample {

struct PlainHeader {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t frames = 0;
    std::uint32_t rate = 0;      ///< frames in `duration` seconds
    std::uint32_t duration = 0;  ///<
    std::uint32_t channels = 0;
    std::uint32_t sampleRate = 0;
    std::uint32_t sampleFrames = 0;

    std::uint64_t rowBytes() const { return std::uint64_t{4} * width; }
    std::uint64_t frameBytes() const { return rowBytes() * height; }
    std::uint64_t framePosition(std::uint32_t index) const { return kBytes + frameBytes() * index; }
    std::uint64_t soundPosition(std::uint32_t sampleFrame) const {
        return framePosition(frames) + std::uint64_t{4} * channels * sampleFrame;
    }
    static constexpr std::uint32_t kBytes = 40;
};

/// False when the file is none of this format or damaged.
bool readHeader(const InputFile& file, PlainHeader& header);

}  // namespace sample
