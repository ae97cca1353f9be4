#include "audio/audio_info.h"

#include <algorithm>

#include "audio/channel_layout.h"
#include "audio/sample_type.h"
#include "diag/log.h"
#include "host/audio_codes.h"
#include "host/result_codes.h"

namespace orvantis {

AudioInfo::AudioInfo(AudioOwner owner) : m_owner(owner) {
    logMessage("AudioInfo::AudioInfo()");
}

AudioInfo::~AudioInfo() {
    logMessage("AudioInfo::~AudioInfo()");
}

std::int32_t AudioInfo::init(const AviStream& stream) {
    m_stream = &stream;
    m_numAudioSampleFrames = stream.header.dwLength;
    m_valid = false;
    m_format = {};
    m_audioPosition = 0;

    m_rejection = analyse(stream.format);
    m_valid = m_rejection.empty();
    if (m_valid) return host::imNoErr;
    logMessage("%s", m_rejection.c_str());
    return host::imBadFile;
}

std::string AudioInfo::analyse(std::span<const std::uint8_t> format) {
    if (format.size() < kMinWaveFormatBytes) {
        return formatString("Avi audio stream format size is too small: %d", static_cast<int>(format.size()));
    }
    // From here on also a rejected stream shows its channels and rate to the host.
    m_format = waveFormatFromBytes(format);

    const WaveGuid guid = sampleFormatGuid(m_format);
    const std::uint32_t formatCode = guid.data1;
    if (!isFormatTagGuid(guid) || (formatCode != kWaveFormatPcm && formatCode != kWaveFormatIeeeFloat)) {
        return formatString("Avi unsupported audio stream format: %s", guidToString(guid).c_str());
    }
    const std::uint32_t channels = m_format.nChannels;
    if (channels > kMaxAudioChannels) {
        return formatString("Avi too many audio channels: %d", static_cast<int>(channels));
    }
    const std::uint32_t bits = m_format.wBitsPerSample;
    if (bits != 8 && bits != 16 && bits != 24 && bits != 32) {
        return formatString("Avi unsupported audio bits per sample: %d", static_cast<int>(bits));
    }
    if (m_format.nBlockAlign != channels * (bits / 8)) {
        return "Avi audio stream format error: nBlockAlign != nChannels * (wBitsPerSample / 8)";
    }
    // Float of 8, 16 or 24 bits gets as far as this: it is described as "other", and reading it fails.
    m_sampleType = audioSampleTypeFromFormat(formatCode, bits);
    return {};
}

void AudioInfo::fillFileInfo(host::imFileInfoRec8& record) const {
    const std::uint32_t channels = m_format.nChannels;
    const std::uint32_t rate = m_format.nSamplesPerSec;

    if (!m_valid) logMessage("Audio is INVALID! Dummy:");
    if (logEnabled()) {
        const std::uint32_t mask = m_format.dwChannelMask;
        logMessage("Audio info:");
        logMessage("    wFormatTag:      %d", static_cast<int>(m_format.wFormatTag));
        logMessage("    format guid:     %s", guidToString(sampleFormatGuid(m_format)).c_str());
        logMessage("    nChannels:       %d", static_cast<int>(channels));
        logMessage("    nSamplesPerSec:  %d", static_cast<int>(rate));
        logMessage("    wBitsPerSample:  %d", static_cast<int>(m_format.wBitsPerSample));
        logMessage("    dwChannelMask:   0x%x", mask);
        logMessage("    numSampleFrames: %d", static_cast<int>(m_numAudioSampleFrames));
    }

    if (m_valid) {
        record.audInfo.numChannels = static_cast<std::int32_t>(channels);
        record.audInfo.sampleRate = static_cast<float>(rate);
        record.audInfo.sampleType = m_sampleType;
        record.audDuration = static_cast<host::PrAudioSample>(m_numAudioSampleFrames);
    } else {
        // The dummy: an empty stream, but one with values that the host can work with.
        record.audInfo.numChannels = static_cast<std::int32_t>(std::clamp(channels, 1u, kMaxAudioChannels));
        record.audInfo.sampleRate = static_cast<float>(std::clamp(rate, 1000u, 192000u));
        record.audInfo.sampleType = host::kPrAudioSampleType_Other;
        record.audDuration = 0;
    }
}

}  // namespace orvantis
