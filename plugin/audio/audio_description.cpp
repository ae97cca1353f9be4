// What the host's Properties window says about an audio stream.

#include <cstring>

#include "audio/audio_info.h"
#include "audio/channel_layout.h"
#include "audio/sample_type.h"
#include "diag/log.h"

namespace orvantis {

namespace {

/// "FrontLeft": the host's name without its common prefix, which says nothing to a user.
const char* shortLabelName(std::uint32_t label) {
    static constexpr char kPrefix[] = "kPrAudioChannelLabel_";
    const char* const name = channelLabelName(label);
    const std::size_t length = sizeof kPrefix - 1;
    return std::strncmp(name, kPrefix, length) == 0 ? name + length : name;
}

std::string labelList(const WaveFormatExtensible& format) {
    const ChannelLabels known = channelLabelsOf(format);
    if (known.count == 0) return "none";
    std::string list;
    for (std::size_t i = 0; i < known.count; ++i) {
        if (i != 0) list += ", ";
        list += shortLabelName(known.labels[i]);
    }
    return list;
}

}  // namespace

std::string AudioInfo::description() const {
    if (!m_valid) {
        return "    Not usable: " +
               (m_rejection.empty() ? std::string("no audio stream was analysed") : m_rejection);
    }

    const std::uint32_t channels = m_format.nChannels;
    const std::uint32_t rate = m_format.nSamplesPerSec;
    std::string text = formatString("    Sample type: %s\n", audioSampleTypeName(m_sampleType));
    text += formatString("    Channels: %u\n", channels);
    text += formatString("    Sample rate: %u Hz\n", rate);
    text +=
        formatString("    Sample frames: %llu\n", static_cast<unsigned long long>(m_numAudioSampleFrames));
    if (rate != 0) {
        const double seconds = static_cast<double>(m_numAudioSampleFrames) / static_cast<double>(rate);
        text += formatString("    Duration: %.3f s\n", seconds);
    } else {
        text += "    Duration: unknown\n";
    }
    if (m_format.wFormatTag == kWaveFormatExtensible) {
        const std::uint32_t mask = m_format.dwChannelMask;
        text += formatString("    Channel mask: 0x%x\n", mask);
    } else {
        text += "    Channel mask: none\n";
    }
    text += "    Channel labels: " + labelList(m_format);
    return text;
}

}  // namespace orvantis
