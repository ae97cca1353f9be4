// The list of hashes that ffmpeg's muxer "framemd5" writes ("-f framemd5"): comment lines that begin with
// '#', then a line for each frame or block of sound, "stream, dts, pts, duration, size, hash". Pure
// functions; any thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tool/shared/base/md5.h"

namespace simhost::tool {

struct FrameMd5Stream {
    bool sound = false;
    std::string codec;       ///< "rawvideo", "pcm_s16le"
    std::uint32_t num = 1;   ///< of the time base: seconds are value × num / den
    std::uint32_t den = 25;  ///<
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::uint32_t sarNum = 0;
    std::uint32_t sarDen = 1;
    std::uint32_t rate = 0;
    std::string layout;  ///< of channels: "stereo"
};

struct FrameMd5Line {
    std::uint32_t stream = 0;
    std::int64_t pts = 0;
    std::int64_t duration = 0;
    std::uint64_t size = 0;
    Md5Digest hash{};
};

struct FrameMd5File {
    std::vector<FrameMd5Stream> streams;
    std::vector<FrameMd5Line> lines;
};

/// Lines go by time, those of one time by stream.
std::string frameMd5Text(const FrameMd5File& file, std::string_view software);

/// Versions 1 and 2. Throws ToolError "not-framemd5" that names the line that cannot be understood, and
/// "other-hash" for a list of other hashes than MD5. Line ends of any system.
FrameMd5File parseFrameMd5(std::string_view text, const std::string& name);

/// ffmpeg's name of the channels that so many loudspeakers usually are; "7 channels" where it has none.
std::string usualChannels(std::uint32_t channels);

}  // namespace simhost::tool
