// The clip that most integration tests play: small enough to check every byte of it by hand, yet with
// everything that a clip can have. Pictures are 8-bit 4:2:2, 16 x 4; sound is 16-bit stereo at 8000 Hz.
// Picture i and sample frame n are told from every other one by their values.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/pixel_formats.h"
#include "tests/support/avi_builder/avi_builder.h"

namespace clips {

/// The format in which the codec delivers most of these clips without conversion.
inline constexpr std::uint32_t kYuy2 = host::PrPixelFormat_YUYV_422_8u_601;
/// What records hold where nothing was written.
inline constexpr std::uint8_t kPattern = 0xA7;

inline constexpr std::int32_t kWidth = 16;
inline constexpr std::int32_t kHeight = 4;
inline constexpr std::uint32_t kFrameBytes = 128;       ///< 16 x 4 luma, twice 8 x 4 chroma
inline constexpr std::uint32_t kSampleRate = 8000;      ///< of the sound
inline constexpr std::uint32_t kSamplesPerFrame = 320;  ///< at 25 pictures a second
inline constexpr std::uint32_t kSoundBytes = 320 * 4;   ///< of the sound chunk behind each picture

/// The bytes of picture `index` as they lie in the file: planes Y, U, V.
orvantis::test::Bytes codedPicture(std::uint32_t index);
/// The same picture as the host receives it in 'yuy2', from the top row down without padding: Y U Y V.
std::vector<std::uint8_t> yuy2Picture(std::uint32_t index);
/// Sample frames `first` and on, 16-bit stereo little-endian. Sample frame n is (n, -n), as far as 16 bits
/// go.
orvantis::test::Bytes codedSound(std::uint32_t first, std::uint32_t count);

struct Shape {
    std::uint32_t frames = 5;
    std::uint32_t audioStreams = 1;
    std::uint32_t rate = 25;
    std::uint32_t scale = 1;
    std::string tag = "O8Y2";  ///< payloads are right for O8Y2 only
    orvantis::test::OpenDml openDml = orvantis::test::OpenDml::kNone;
};

/// Picture and sound chunks in turn. Stream 0 is the video, 1 and on are sound.
orvantis::test::AviBuilder builder(const Shape& shape);
inline orvantis::test::AviBuilder builder() {
    return builder(Shape{});
}

}  // namespace clips
