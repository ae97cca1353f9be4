// The analysis of one audio stream and the delivery of its samples. One per importer. Constant once it is
// analysed, but for the position of sequential reads: any number of host threads may read at once.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "audio/audio_owner.h"
#include "audio/wave_format.h"
#include "diag/atomic.h"
#include "diag/spare.h"
#include "fileio/read_buffer.h"
#include "host/records.h"
#include "host/result_codes.h"

namespace orvantis {

class AviStream;

class AudioInfo {
 public:
    explicit AudioInfo(const AudioOwner& owner);
    ~AudioInfo();
    AudioInfo(const AudioInfo&) = delete;
    AudioInfo& operator=(const AudioInfo&) = delete;

    /// Analyses the stream's format: imNoErr when accepted, imBadFile (the reason logged) when rejected,
    /// which valid() keeps. `stream` is referenced, not owned.
    host::ImporterResult init(const AviStream& stream);
    /// Logs the format and writes the four audio fields of the host's record (never its has-audio flag).
    void fillFileInfo(host::imFileInfoRec8& record) const;
    /// Delivers sample frames, silence where nothing can be read. imNoErr or imDecompressionError. Any
    /// thread; of sequential reads that meet, each gets sample frames of its own.
    host::ImporterResult importAudio(const host::imImportAudioRec7& record);
    /// Gives up the memory that reads keep for the next one.
    void releaseBuffers() noexcept { m_readBuffer.drop(); }
    /// Writes the loudspeaker labels: imNoErr, or imUnsupported for an unusable stream.
    host::ImporterResult getChannelLayout(host::imGetAudioChannelLayoutRec& record) const;

    bool valid() const noexcept { return m_valid; }
    const WaveFormatExtensible& format() const noexcept { return m_format; }
    /// Text for the host's Properties window, "\n" between lines, four blanks ahead of each, no break at the
    /// end.
    std::string description() const;

 private:
    /// Fills m_format and m_sampleType from the bytes of the stream format. Empty when accepted, else why
    /// not.
    std::string analyse(std::span<const std::uint8_t> format);

    AudioOwner m_owner;
    bool m_valid = false;
    const AviStream* m_stream = nullptr;
    std::uint64_t m_numAudioSampleFrames = 0;  ///< the stream header's dwLength as it stands
    std::uint32_t m_sampleType = 0;            ///< host sample-type code
    WaveFormatExtensible m_format{};
    Atomic<std::int64_t> m_audioPosition{0};  ///< next sample frame of sequential reads
    Spare<fileio::ReadBuffer> m_readBuffer;   ///< interleaved bytes; only grows while one is kept
    std::string m_rejection;                  ///< why the stream is not usable
};

}  // namespace orvantis
