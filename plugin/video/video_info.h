// The analysis of one video stream: what it is, how it can be decoded, how many frames at which rate; owner
// of the codec sessions. Analysed once on the thread that describes the file; constant afterwards, so that
// any number of calls may use it at once.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/result_codes.h"
#include "suites/importer_suites.h"
#include "video/format_tables.h"
#include "video/frame_decoder.h"
#include "video/frame_rate.h"
#include "video/orvantis_codec.h"

namespace orvantis {

class AviStream;

class VideoInfo {
 public:
    /// Opens the codec session, then asks the host for its ticks per second. Throws OrvantisError or, when
    /// the time suite is refused, std::runtime_error. `suites` is used during the call only.
    explicit VideoInfo(LazyImporterSuites& suites);
    ~VideoInfo();
    VideoInfo(const VideoInfo&) = delete;
    VideoInfo& operator=(const VideoInfo&) = delete;

    /// What the stream is and how it can be decoded; needs no index, so that a foreign file is refused
    /// without one. imNoErr, imBadFile or imOtherErr, the reason logged. `stream` is referenced, not owned,
    /// and outlives the object. Once per object.
    host::ImporterResult analyseFormat(const AviStream& stream);
    /// Frame count and frame rate, from the stream's chunk list and header. After analyseFormat and
    /// readIndexes().
    void analyseTiming();

    std::int64_t ticksPerSecond() const noexcept { return m_ticksPerSecond; }
    std::int32_t width() const noexcept { return static_cast<std::int32_t>(m_compressedFormat.width); }
    std::int32_t height() const noexcept { return static_cast<std::int32_t>(m_compressedFormat.height); }
    std::int64_t numFrames() const noexcept { return m_numFrames; }
    FrameRate frameRate() const noexcept { return m_frameRate; }
    const OrvantisFrameFormat& compressedFormat() const noexcept { return m_compressedFormat; }
    const SubTypeInfo& subTypeInfo() const noexcept { return m_subTypeInfo; }
    const std::vector<FormatInfo>& decodeFormats() const noexcept { return m_decodeFormats; }
    const AviStream& stream() const noexcept { return *m_stream; }
    /// The host's field order code; progressive, since the container says nothing about fields.
    std::int8_t fieldOrder() const noexcept;
    bool hasAlpha() const noexcept;
    /// The frame that a time in ticks falls on, as the low 32 bits of the truncated quotient; 4294967295
    /// where the rate or the time base gives no frame duration.
    std::uint32_t frameIndexAt(std::int64_t frameTime) const noexcept;
    /// Text for the host's Properties window, "\n" between lines, four blanks ahead of each, no break at the
    /// end.
    std::string description() const;

    /// The sessions to decode with. Belongs to the frame import, which lends them to its calls one by one.
    FrameDecoder& decoder() const noexcept { return m_decoder; }
    FormatData formatData() const noexcept { return m_formatData; }

 private:
    std::int64_t m_ticksPerSecond = 0;
    mutable FrameDecoder m_decoder;  ///< keeps calls apart by itself, and is no part of what was found out
    OrvantisFrameFormat m_compressedFormat;
    std::vector<std::uint8_t> m_formatData;
    SubTypeInfo m_subTypeInfo{};
    std::vector<FormatInfo> m_decodeFormats;
    const AviStream* m_stream = nullptr;
    std::int64_t m_numFrames = 0;
    FrameRate m_frameRate;
};

}  // namespace orvantis
