// Analyses one video stream in the order in which the log tells of it. Runs on the thread that describes the
// file; what it finds is constant afterwards. Reads no file: the stream's header, format and chunk list are
// there already.
#include "video/video_info.h"

#include <stdexcept>

#include "avi/avi_stream.h"
#include "diag/format.h"
#include "diag/log.h"
#include "diag/text.h"
#include "host/record_values.h"
#include "host/result_codes.h"
#include "video/decode_formats.h"
#include "video/orvantis_error.h"

namespace orvantis {

namespace {

// Initialises the first member, so that the line precedes what the codec session, a later member, may have to
// say.
std::int64_t logConstruction() {
    logMessage("VideoInfo::VideoInfo()");
    return 0;
}

double quotient(std::int32_t numerator, std::int32_t denominator) noexcept {
    return static_cast<double>(numerator) / static_cast<double>(denominator);
}

// The header's rate and scale are unsigned in the file and signed in all arithmetic.
FrameRate rateOf(const AviStreamHeader& header) noexcept {
    return {static_cast<std::int32_t>(header.dwRate), static_cast<std::int32_t>(header.dwScale)};
}

bool isValid(FrameRate rate) noexcept {
    return rate.numerator != 0 && rate.denominator != 0;
}

bool sameValue(FrameRate a, FrameRate b) noexcept {
    return std::int64_t{a.numerator} * b.denominator == std::int64_t{b.numerator} * a.denominator;
}

std::string rateText(FrameRate rate) {
    return formatString("%.3f (%d/%d)", quotient(rate.numerator, rate.denominator),
                        static_cast<int>(rate.numerator), static_cast<int>(rate.denominator));
}

constexpr double kBytesPerMiB = 1024.0 * 1024.0;

}  // namespace

VideoInfo::VideoInfo(LazyImporterSuites& suites)
    : m_ticksPerSecond(logConstruction()), m_compressedFormat(emptyFrameFormat()) {
    // What the suite writes counts, whatever it returns. Without a time base no time falls on a frame; the
    // file can still be described.
    host::PrTime ticks = 0;
    static_cast<void>(suites.get().time.get().GetTicksPerSecond(&ticks));
    m_ticksPerSecond = ticks;
}

VideoInfo::~VideoInfo() {
    logMessage("VideoInfo::~VideoInfo()");
}

host::ImporterResult VideoInfo::analyseFormat(const AviStream& stream) {
    m_stream = &stream;
    m_formatData = stream.format;
    if (m_formatData.empty()) {
        logMessage("Compressed format size is invalid");
        return host::ImporterResult::imBadFile;
    }

    try {
        m_compressedFormat = m_decoder.mainSession().codec.decompressQuery(m_formatData, nullptr);
    } catch (const OrvantisError& error) {
        logMessage("Decompress query failed: %s", error.what());
        return host::ImporterResult::imBadFile;
    }
    const OrvantisFrameFormat& coded = m_compressedFormat;
    if (logEnabled()) {
        logMessage("Compressed format info: %d x %d, %s (%d), %s (%d), range: %d",
                   static_cast<int>(coded.width), static_cast<int>(coded.height), codecTypeName(coded.type),
                   static_cast<int>(coded.type), colorSpaceName(coded.colorSpace),
                   static_cast<int>(coded.colorSpace), static_cast<int>(coded.range));
    }

    try {
        m_subTypeInfo = GetSubTypeInfo_by_orvTypeComp(coded.type);
        m_decodeFormats = buildDecodeFormats(m_formatData);
    } catch (const UnknownCodedType& unknown) {
        logMessage("Unknown compressed type: %s (%s)", codecTypeName(unknown.type),
                   std::to_string(unknown.type).c_str());
        return host::ImporterResult::imOtherErr;
    } catch (const OrvantisError& error) {
        // The question that was answered above, put again through a second session.
        logMessage("Decompress query failed: %s", error.what());
        return host::ImporterResult::imBadFile;
    }
    logMessage("Decode formats:");
    if (logEnabled()) {
        for (const FormatInfo& format : m_decodeFormats) {
            logMessage("    %s [%s]", host::pixelFormatName(format.pixelFormat),
                       fourccToString(format.pixelFormat).c_str());
        }
    }
    if (m_decodeFormats.empty()) {
        logMessage("No formats to decode into: decodeFormats is empty");
        return host::ImporterResult::imBadFile;
    }
    return host::ImporterResult::imNoErr;
}

void VideoInfo::analyseTiming() {
    m_numFrames = static_cast<std::int64_t>(m_stream->entries().size());
    const FrameRate fileRate = rateOf(m_stream->header);
    m_frameRate = limitDuration(sanitiseFrameRate(fileRate.numerator, fileRate.denominator), m_numFrames);

    logMessage("NumFrames: %d", static_cast<int>(m_numFrames));
    // A scale of 0 shows as what printf makes of the quotient.
    logMessage("AVI FPS: %d / %d (%.3f)", static_cast<int>(fileRate.numerator),
               static_cast<int>(fileRate.denominator), quotient(fileRate.numerator, fileRate.denominator));
    logMessage("Adjusted FPS: %d / %d (%.3f)", static_cast<int>(m_frameRate.numerator),
               static_cast<int>(m_frameRate.denominator),
               quotient(m_frameRate.numerator, m_frameRate.denominator));
}

std::int8_t VideoInfo::fieldOrder() const noexcept {
    return host::kFieldTypeProgressive;
}

bool VideoInfo::hasAlpha() const noexcept {
    return m_subTypeInfo.colorModel == kModelRgba || m_subTypeInfo.colorModel == kModelYuva;
}

std::uint32_t VideoInfo::frameIndexAt(std::int64_t frameTime) const noexcept {
    return frameIndexOfTime(frameTime, m_frameRate, m_ticksPerSecond);
}

std::string VideoInfo::description() const {
    std::string text = formatString("    Codec: %s [%s]\n", utf8FromUtf16(m_subTypeInfo.subTypeName).c_str(),
                                    fourccToString(m_subTypeInfo.subType, true).c_str());
    text += formatString("    Frame size: %d x %d\n", static_cast<int>(width()), static_cast<int>(height()));
    text += "    Frame rate: " + rateText(m_frameRate) + "\n";
    const FrameRate fileRate = rateOf(m_stream->header);
    if (!isValid(fileRate)) {
        text += formatString("    Frame rate in the file: invalid (%d/%d)\n",
                             static_cast<int>(fileRate.numerator), static_cast<int>(fileRate.denominator));
    } else if (!sameValue(fileRate, m_frameRate)) {
        text += "    Frame rate in the file: " + rateText(fileRate) + "\n";
    }

    const double mebibytes = static_cast<double>(m_stream->totalBytes()) / kBytesPerMiB;
    const bool hasDuration = m_frameRate.numerator > 0 && m_frameRate.denominator > 0;
    const double seconds =
        hasDuration ? static_cast<double>(m_numFrames) * m_frameRate.denominator / m_frameRate.numerator
                    : 0.0;
    text += formatString("    Frames: %lld\n", static_cast<long long>(m_numFrames));
    text += hasDuration ? formatString("    Duration: %.3f s\n", seconds) : "    Duration: unknown\n";
    text += formatString("    Stream data: %.2f MiB\n", mebibytes);
    text += seconds > 0.0 ? formatString("    Mean data rate: %.2f MiB/s\n", mebibytes / seconds)
                          : "    Mean data rate: unknown\n";

    text += "    Decode formats: ";
    const char* separator = "";
    for (const FormatInfo& format : m_decodeFormats) {
        text += separator;
        text += format.name;
        separator = ", ";
    }
    return text;
}

}  // namespace orvantis
