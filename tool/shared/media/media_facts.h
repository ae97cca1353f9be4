// What the records mean that the plug-in fills in about a file: for every command that shows them. Calls of a
// Clip are sent to the plug-in. Main thread only.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simhost/clip.h"

namespace simhost::tool {

/// Frames of a described stream.
std::uint32_t frameCount(const host::imFileInfoRec8& info) noexcept;
/// 0 when the record tells no rate.
double framesPerSecond(const host::imFileInfoRec8& info) noexcept;
/// "O8Y2".
std::string codedType(const host::imFileInfoRec8& info);

const char* sampleTypeName(std::uint32_t type) noexcept;
const char* fieldTypeName(std::int8_t type) noexcept;
const char* alphaTypeName(std::int8_t type) noexcept;

struct SoundShape {
    static constexpr std::uint32_t kMostChannels = 32;  ///< that a request for samples can have

    std::uint32_t channels = 0;
    double rate = 0;           ///< sample frames a second, 0 when not told
    std::uint64_t length = 0;  ///< sample frames

    double seconds() const noexcept { return rate > 0 ? static_cast<double>(length) / rate : 0.0; }
};

/// Nothing for a stream without sound, or with more or fewer channels than can be asked for.
std::optional<SoundShape> soundShape(const host::imFileInfoRec8& info) noexcept;

/// For each channel its label, or nothing where the plug-in has left it as it was. Empty when it refused.
std::vector<std::optional<std::uint32_t>> channelLabels(const Clip& clip, std::uint32_t channels);

/// A channel's place for people: "Front left".
std::string loudspeakerName(std::uint32_t label);

struct UnusableSound {
    std::string stream;  ///< its number in the file
    std::string reason;  ///< as the plug-in says it, and what it means
};

/// The audio streams that the plug-in's description of a file calls unusable.
std::vector<UnusableSound> unusableSounds(std::string_view description);

}  // namespace simhost::tool
