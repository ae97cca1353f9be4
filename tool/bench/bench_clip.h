// One clip under the host of bench_host.h: the calls of the host with as little around them as possible, so
// that what is timed is the plug-in. Failures of the plug-in are ToolErrors, because a measurement of calls
// that fail says nothing. Calls come from one thread at a time.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/entry_points.h"
#include "host/records.h"
#include "host/std_parms.h"

namespace simhost::tool {

/// Sends imInit, and imShutdown at the end. `entry` must stay loaded meanwhile.
class BenchImporter {
 public:
    explicit BenchImporter(host::ImportEntryFn entry);
    BenchImporter(const BenchImporter&) = delete;
    BenchImporter& operator=(const BenchImporter&) = delete;
    ~BenchImporter();

    std::int32_t call(std::int32_t selector, void* param1, void* param2) const;

 private:
    host::ImportEntryFn m_entry;
    mutable host::imStdParms m_stdParms;
};

class BenchClip {
 public:
    /// imOpenFile8. `importer` must outlive the clip.
    BenchClip(const BenchImporter& importer, const std::string& pathUtf8);
    BenchClip(const BenchClip&) = delete;
    BenchClip& operator=(const BenchClip&) = delete;
    /// imCloseFile.
    ~BenchClip();

    /// imGetInfo8 of stream 0 with its result; no error when the plug-in refuses the file.
    std::int32_t tryDescribe();
    /// The same for a file that the plug-in must accept.
    void describe();
    /// Number of frames and the first pixel format on offer, of a described clip.
    std::uint32_t frames() const noexcept { return m_frames; }
    std::uint32_t audioChannels() const noexcept { return m_audioChannels; }
    std::uint32_t audioRate() const noexcept { return m_audioRate; }
    /// Duration of a frame.
    double frameSeconds() const noexcept {
        return m_rate > 0 ? static_cast<double>(m_frameDuration) / m_rate : 0.0;
    }
    void* privateData() const noexcept { return m_privateData; }
    const BenchImporter& importer() const noexcept { return *m_importer; }

    /// Fills a request for frame `index` in the clip's first pixel format, in any size. The record refers to
    /// this clip.
    void fillRequest(host::imSourceVideoRec& record, std::uint32_t index, host::PPixHand* frame) const;
    /// The format in which frames are asked for.
    std::uint32_t pixelFormat() const noexcept { return m_format.inPixelFormat; }
    std::int32_t width() const noexcept { return m_width; }
    std::int32_t height() const noexcept { return m_height; }

    /// imGetSourceVideo, and the frame given back at once.
    void frame(std::uint32_t index) const;
    /// imQuietFile.
    void quiet();
    /// imImportAudio7.
    void audio(std::int64_t position, std::uint32_t size, float** buffers) const;

 private:
    const BenchImporter* m_importer;
    std::u16string m_path;
    void* m_privateData = nullptr;
    host::imFileRef m_fileRef;
    std::uint32_t m_frames = 0;
    std::uint32_t m_audioChannels = 0;
    std::uint32_t m_audioRate = 0;
    std::int32_t m_rate = 0;
    std::int32_t m_frameDuration = 0;
    std::int32_t m_width = 0;
    std::int32_t m_height = 0;
    host::imFrameFormat m_format{};
};

/// The asynchronous importer of a described clip.
class BenchAsync {
 public:
    explicit BenchAsync(const BenchClip& clip);
    BenchAsync(const BenchAsync&) = delete;
    BenchAsync& operator=(const BenchAsync&) = delete;
    ~BenchAsync();

    void initiate(std::uint32_t index) const;
    /// aiGetFrame, and the frame given back at once. Returns its number in the order of decoding.
    std::uint64_t frame(std::uint32_t index) const;
    /// aiFlush.
    void flush() const;

 private:
    const BenchClip* m_clip;
    host::AsyncImportEntryFn m_entry = nullptr;
    void* m_privateData = nullptr;
};

}  // namespace simhost::tool
