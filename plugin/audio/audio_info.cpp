#include "audio/audio_info.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "audio/audio_description.h"
#include "audio/audio_import.h"
#include "audio/channel_layout.h"
#include "audio/sample_arithmetic.h"
#include "audio/sample_type.h"
#include "avi/avi_stream.h"
#include "diag/format.h"
#include "diag/log.h"
#include "host/audio_codes.h"
#include "host/result_codes.h"

namespace orvantis {

AudioInfo::AudioInfo(const AudioOwner& owner) : m_owner(owner) {
    logMessage("AudioInfo::AudioInfo()");
}

AudioInfo::~AudioInfo() {
    logMessage("AudioInfo::~AudioInfo()");
}

host::ImporterResult AudioInfo::init(const AviStream& stream) {
    m_stream = &stream;
    m_numAudioSampleFrames = stream.header.dwLength;
    m_valid = false;
    m_format = {};
    m_audioPosition = 0;

    m_rejection = analyse(stream.format);
    m_valid = m_rejection.empty();
    if (m_valid) {
        return host::ImporterResult::imNoErr;
    }
    logMessage("%s", m_rejection.c_str());
    return host::ImporterResult::imBadFile;
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

    if (!m_valid) {
        logMessage("Audio is INVALID! Dummy:");
    }
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

host::ImporterResult AudioInfo::importAudio(const host::imImportAudioRec7& record) {
    // The host knows the dummy as empty, so its buffers stay as they are.
    if (!m_valid) {
        return host::ImporterResult::imNoErr;
    }

    const std::int64_t position = record.position;
    const std::uint32_t size = record.size;
    float** const buffers = record.buffer;
    const std::uint32_t blockAlign = m_format.nBlockAlign;

    const Loan<fileio::ReadBuffer> buffer(m_readBuffer);
    // The host may name any position: sums and products go round instead of overflowing.
    // The position moves on at once, so that a read which comes meanwhile goes on behind this one.
    std::int64_t formerPosition = m_audioPosition.load(std::memory_order_relaxed);
    std::int64_t startPos = 0;
    std::int64_t endPos = 0;
    do {
        startPos = position >= 0 ? position : formerPosition;
        endPos = endPosition(startPos, size);
        // not always covered: another thread has to come between two instructions
    } while (!m_audioPosition.compare_exchange_weak(formerPosition, endPos, std::memory_order_relaxed));
    const std::uint64_t startPosBytes = firstByteOf(startPos, blockAlign);
    const std::uint32_t sizeBytes = bytesOfFrames(size, blockAlign);
    if (logEnabled()) {
        logMessage("importAudioRec7P->position: %lld", static_cast<long long>(position));
        logMessage("m_audioPosition           : %lld", static_cast<long long>(formerPosition));
        logMessage("startPos                  : %lld", static_cast<long long>(startPos));
        logMessage("importAudioRec7P->size    : %u", size);
        logMessage("endPos                    : %lld", static_cast<long long>(endPos));
        logMessage("m_numAudioSampleFrames    : %lld", static_cast<long long>(m_numAudioSampleFrames));
        logMessage("startPosBytes             : %lld", static_cast<long long>(startPosBytes));
        logMessage("sizeBytes                 : %lld", static_cast<long long>(sizeBytes));
    }

    std::byte* bytes = nullptr;
    try {
        // One byte at least: the host's converter gets an address for no sample frames too.
        bytes = buffer->ensure(std::max(sizeBytes, 1u));
    } catch (const std::bad_alloc&) {
        // Nothing was read: sequential reads go on where they were, unless another one has moved them.
        std::int64_t expected = endPos;
        m_audioPosition.compare_exchange_strong(expected, formerPosition, std::memory_order_relaxed);
        throw;
    }
    const std::uint64_t done = readAudioBytes(m_owner, *m_stream, startPosBytes, bytes, sizeBytes);
    const std::uint64_t fill = sizeBytes - done;
    logMessage("fill    : %lld", static_cast<long long>(fill));
    if (fill != 0) {
        std::memset(bytes + done, 0, fill);
    }
    const AudioSamples samples{{bytes, sizeBytes}, m_sampleType, m_format.nChannels, blockAlign};
    return deliverAudio(samples, *m_owner.suites, buffers, size);
}

host::ImporterResult AudioInfo::getChannelLayout(host::imGetAudioChannelLayoutRec& record) const {
    if (!m_valid) {
        return host::ImporterResult::imUnsupported;
    }

    // Channels without a label keep what the host preset.
    const ChannelLabels known = channelLabelsOf(m_format);
    for (std::size_t i = 0; i < known.count; ++i) {
        record.outChannelLabels[i] = known.labels[i];
    }

    if (logEnabled()) {
        logMessage("Audio channel layout (%d channels):", static_cast<int>(m_format.nChannels));
        const std::uint32_t channels = labelledChannels(m_format);
        for (std::uint32_t i = 0; i < channels; ++i) {
            const std::uint32_t label = record.outChannelLabels[i];
            logMessage("    %d: %s", static_cast<int>(i), channelLabelName(label));
        }
    }
    return host::ImporterResult::imNoErr;
}

std::string AudioInfo::description() const {
    if (m_valid) {
        return audioDescription(m_format, m_sampleType, m_numAudioSampleFrames);
    }
    return "    Not usable: " +
           (m_rejection.empty() ? std::string("no audio stream was analysed") : m_rejection);
}

}  // namespace orvantis
