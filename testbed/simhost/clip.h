// One file as the host holds it: the private data that the plug-in gave it, and the calls that the host makes
// on it. The destructor closes. Calls on one Clip come from one thread at a time, as the host does it.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/record_values.h"
#include "host/records.h"
#include "simhost/frame.h"
#include "simhost/importer.h"

namespace simhost {

struct StreamInfo {
    std::int32_t streamIndex = 0;
    Answer<host::imFileInfoRec8> answer;
};

struct AnalysisText {
    std::int32_t result = 0;
    std::string text;                  ///< up to the terminator; all of the buffer when there is none
    bool terminated = false;           ///<
    std::vector<std::uint8_t> buffer;  ///< the whole buffer, with its former bytes where nothing was written
    Answer<host::imAnalysisRec> answer;
};

struct DataRates {
    std::int32_t sizingResult = 0;  ///< of the call without a buffer
    std::int32_t bufferSize = 0;    ///< what that call asked for
    std::int32_t result = 0;        ///< of the call with one
    std::int32_t baseRate = 0;
    std::vector<host::imDataSample> samples;
};

struct PixelFormats {
    std::vector<std::uint32_t> formats;  ///< in the order offered
    std::int32_t lastResult = 0;         ///< what ended the list
};

/// A delivered frame, or why there is none.
struct FrameAnswer {
    std::int32_t result = 0;
    std::optional<Frame> frame;
    Answer<host::imSourceVideoRec> answer;
};

struct AudioAnswer {
    std::int32_t result = 0;
    std::vector<std::vector<float>> channels;  ///< `size` floats each
    Answer<host::imImportAudioRec7> answer;
};

struct OpenOptions {
    std::int32_t streamIndex = 0;
    std::int32_t readWrite = host::kOpenForReading;
    std::int32_t importerId = 0x1D;  ///< what the host calls this instance
};

class AsyncClip;

class Clip {
 public:
    /// What audio buffers hold before the plug-in fills them: no sample of any test signal.
    static constexpr float kAudioPrefill = -12345.0F;

    /// Sends imOpenFile8. `importer` must outlive the Clip.
    Clip(const Importer& importer, std::u16string path, OpenOptions options = {});
    Clip(const Importer& importer, std::string_view pathUtf8, OpenOptions options = {});
    Clip(Clip&& other) noexcept;
    Clip& operator=(Clip&& other) = delete;
    ~Clip();

    bool isOpen() const noexcept { return m_privateData != nullptr; }
    std::int32_t openResult() const noexcept { return m_openAnswer.result; }
    const Answer<host::imFileOpenRec8>& openAnswer() const noexcept { return m_openAnswer; }
    host::imFileRef fileRef() const noexcept {
        return m_fileRef;
    }  ///< as the host holds it; all bits set when closed
    void* privateData() const noexcept { return m_privateData; }
    const Importer& importer() const noexcept { return *m_importer; }
    Host& host() const noexcept { return m_importer->host(); }

    /// imGetInfo8. Analyses of the plug-in are those of the stream asked for last. Remembers the video's size
    /// and rate for frameTime().
    Answer<host::imFileInfoRec8> getInfo(std::int32_t streamIndex);
    /// imGetInfo8 for stream 0 and on while the answer is 18.
    std::vector<StreamInfo> walkStreams();

    /// Without a buffer the record's pointer is null. `fill` presets the buffer.
    AnalysisText analysis(std::int32_t bufferSize, bool withBuffer = true, std::uint8_t fill = 0xA7) const;
    DataRates dataRates() const;
    /// One call with a buffer of `bufferSize` bytes, whatever the plug-in would ask for.
    DataRates dataRates(std::int32_t bufferSize) const;
    PixelFormats pixelFormats() const;
    Answer<host::imIndPixelFormatRec> pixelFormat(std::uint32_t index) const;

    /// imGetSourceVideo. An empty list is passed as a null pointer.
    FrameAnswer getSourceVideo(host::PrTime time, std::span<const host::imFrameFormat> formats) const;
    /// The frame of that index in that format, in any size.
    FrameAnswer getFrame(std::uint32_t index, std::uint32_t pixelFormat) const;
    /// The first tick of a frame by the rate that getInfo has told: index × vidSampleSize × ticks / vidScale,
    /// rounded up. 0 without a rate, and clamped where it leaves 64 bits.
    host::PrTime frameTime(std::uint32_t index) const;

    /// imImportAudio7 into `channels` buffers of `size` floats with guards behind, preset with `prefill`.
    AudioAnswer importAudio(std::int64_t position, std::uint32_t size, std::uint32_t channels,
                            float prefill = kAudioPrefill) const;
    /// `fill` presets the labels' bytes.
    Answer<host::imGetAudioChannelLayoutRec> channelLayout(std::uint8_t fill = 0xA7) const;

    /// imQuietFile: the plug-in lets go of the file.
    std::int32_t quiet();
    /// imOpenFile8 with the private data of before.
    Answer<host::imFileOpenRec8> reopen();
    /// imCloseFile. Does nothing when not open.
    std::int32_t close();

    /// The host holds the file no more, without a call: another thread has closed it by hand.
    void forget() noexcept { m_privateData = nullptr; }

    /// imCreateAsyncImporter.
    AsyncClip createAsync() const;

 private:
    Answer<host::imFileOpenRec8> open(void* privateData);
    std::int32_t letGo(std::int32_t selector);

    const Importer* m_importer;
    std::u16string m_path;
    OpenOptions m_options;
    host::imFileRef m_fileRef = host::kInvalidFileRef;
    void* m_privateData = nullptr;
    Answer<host::imFileOpenRec8> m_openAnswer;
    std::int32_t m_rate = 0;
    std::int32_t m_frameDuration = 0;
};

/// The first tick of frame `index` at `rate` / `duration` frames a second, rounded up; see Clip::frameTime.
host::PrTime firstTickOfFrame(std::uint32_t index, std::int32_t rate, std::int32_t duration,
                              std::int64_t ticksPerSecond) noexcept;

}  // namespace simhost
