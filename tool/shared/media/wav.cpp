#include "tool/shared/media/wav.h"

#include <limits>
#include <string_view>

#include "host/audio_codes.h"

namespace simhost::tool {
namespace {

using Bytes = std::vector<std::uint8_t>;

void append(Bytes& out, std::string_view text) {
    out.insert(out.end(), text.begin(), text.end());
}

void append(Bytes& out, std::uint64_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) {
        out.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }
}

struct Label {
    std::uint32_t label;
    std::uint32_t speaker;  // bit of the mask, 0 for none
    const char* name;
};

#define LABEL(id, speaker) \
    { host::kPrAudioChannelLabel_##id, speaker, #id }

constexpr Label kLabels[] = {
    LABEL(Discrete, 0),
    LABEL(FrontLeft, 0x1),
    LABEL(FrontRight, 0x2),
    LABEL(FrontCenter, 0x4),
    LABEL(LowFrequency, 0x8),
    LABEL(BackLeft, 0x10),
    LABEL(BackRight, 0x20),
    LABEL(BackCenter, 0x100),
    LABEL(FrontLeftOfCenter, 0x40),
    LABEL(FrontRightOfCenter, 0x80),
    LABEL(SideLeft, 0x200),
    LABEL(SideRight, 0x400),
    LABEL(TopCenter, 0x800),
    LABEL(TopFrontLeft, 0x1000),
    LABEL(TopFrontRight, 0x4000),
    LABEL(TopFrontCenter, 0x2000),
    LABEL(TopBackLeft, 0x8000),
    LABEL(TopBackRight, 0x20000),
    LABEL(TopBackCenter, 0x10000),
    LABEL(FrontLeftWide, 0),
    LABEL(FrontRightWide, 0),
    LABEL(LeftHeight, 0),
    LABEL(RightHeight, 0),
    LABEL(RearSurroundLeft, 0),
    LABEL(RearSurroundRight, 0),
    LABEL(LFE2, 0),
    LABEL(LeftTotal, 0),
    LABEL(RightTotal, 0),
    LABEL(Ambisonic_W, 0),
    LABEL(Ambisonic_X, 0),
    LABEL(Ambisonic_Y, 0),
    LABEL(Ambisonic_Z, 0),
};

#undef LABEL

const Label* find(std::uint32_t label) noexcept {
    for (const Label& row : kLabels) {
        if (row.label == label) {
            return &row;
        }
    }
    return nullptr;
}

}  // namespace

std::optional<Bytes> wavHeader(std::uint32_t channels, std::uint32_t sampleRate, std::uint32_t channelMask,
                               std::uint64_t sampleFrames) {
    constexpr std::uint64_t kHeaderBytes = 80;
    constexpr std::uint64_t kMost = std::numeric_limits<std::uint32_t>::max();
    const std::uint64_t frameBytes = std::uint64_t{channels} * sizeof(float);
    if (channels == 0 || channels > 0xFFFF / sizeof(float) ||
        sampleFrames > (kMost - kHeaderBytes) / frameBytes) {
        return std::nullopt;
    }
    const std::uint64_t dataBytes = frameBytes * sampleFrames;
    Bytes out;
    append(out, "RIFF");
    append(out, kHeaderBytes - 8 + dataBytes, 4);
    append(out, "WAVEfmt ");
    append(out, 40, 4);
    append(out, 0xFFFE, 2);  // WAVE_FORMAT_EXTENSIBLE
    append(out, channels, 2);
    append(out, sampleRate, 4);
    append(out, std::uint64_t{sampleRate} * frameBytes, 4);
    append(out, frameBytes, 2);
    append(out, 32, 2);
    append(out, 22, 2);  // bytes of the extension
    append(out, 32, 2);  // valid bits
    append(out, channelMask, 4);
    // IEEE float: 00000003-0000-0010-8000-00AA00389B71
    append(out, 3, 4);
    append(out, 0x0010'0000, 4);
    for (const int byte : {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}) {
        append(out, static_cast<std::uint64_t>(byte), 1);
    }
    append(out, "fact");
    append(out, 4, 4);
    append(out, sampleFrames, 4);
    append(out, "data");
    append(out, dataBytes, 4);
    return out;
}

std::uint32_t channelMask(std::span<const std::uint32_t> labels) noexcept {
    std::uint32_t mask = 0;
    for (const std::uint32_t label : labels) {
        const Label* row = find(label);
        if (row == nullptr || row->speaker <= mask) {
            return 0;
        }
        mask |= row->speaker;
    }
    return mask;
}

const char* channelLabelName(std::uint32_t label) noexcept {
    const Label* row = find(label);
    return row == nullptr ? "Unknown" : row->name;
}

}  // namespace simhost::tool
