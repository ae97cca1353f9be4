#include "audio/audio_description.h"

#include <cstring>

#include "audio/channel_layout.h"
#include "audio/sample_type.h"
#include "diag/format.h"

namespace orvantis {

namespace {

/// "FrontLeft": the host's name without its common prefix, which says nothing to a user.
const char* shortLabelName(std::uint32_t label) {
    static constexpr char kPrefix[] = "kPrAudioChannelLabel_";
    const char* const name = channelLabelName(label);
    const std::size_t length = sizeof kPrefix - 1;
    // not covered when false: every name of a label begins so
    return std::strncmp(name, kPrefix, length) == 0 ? name + length : name;
}

std::string labelList(const WaveFormatExtensible& format) {
    const ChannelLabels known = channelLabelsOf(format);
    if (known.count == 0) {
        return "none";
    }
    std::string list;
    for (std::size_t i = 0; i < known.count; ++i) {
        if (i != 0) {
            list += ", ";
        }
        list += shortLabelName(known.labels[i]);
    }
    return list;
}

}  // namespace

std::string audioDescription(const WaveFormatExtensible& format, std::uint32_t sampleType,
                             std::uint64_t sampleFrames) {
    const std::uint32_t channels = format.nChannels;
    const std::uint32_t rate = format.nSamplesPerSec;
    std::string text = formatString("    Sample type: %s\n", audioSampleTypeName(sampleType));
    text += formatString("    Channels: %u\n", channels);
    text += formatString("    Sample rate: %u Hz\n", rate);
    text += formatString("    Sample frames: %llu\n", static_cast<unsigned long long>(sampleFrames));
    if (rate != 0) {
        const double seconds = static_cast<double>(sampleFrames) / static_cast<double>(rate);
        text += formatString("    Duration: %.3f s\n", seconds);
    } else {
        text += "    Duration: unknown\n";
    }
    if (format.wFormatTag == kWaveFormatExtensible) {
        const std::uint32_t mask = format.dwChannelMask;
        text += formatString("    Channel mask: 0x%x\n", mask);
    } else {
        text += "    Channel mask: none\n";
    }
    text += "    Channel labels: " + labelList(format);
    return text;
}

}  // namespace orvantis
