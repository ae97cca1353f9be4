// The steps from a request to a decoded host frame. Called by the synchronous selector on the host's threads
// and by the asynchronous importer's tasks; see the header for what callers keep apart. From the second frame
// of a format on, nothing here allocates, and no text is built while the log is off.
#include "video/frame_import.h"

#include <exception>
#include <optional>

#include "avi/frame_chunk.h"
#include "diag/compiler.h"
#include "diag/format.h"
#include "diag/log.h"
#include "host/pixel_formats.h"
#include "host/result_codes.h"
#include "host/suites.h"
#include "suites/suite_result.h"
#include "video/decode_formats.h"
#include "video/format_tables.h"
#include "video/orvantis_error.h"

namespace orvantis {

namespace {

ORVANTIS_COLD void logPlace(const VideoInfo& video, const FrameRequest& request, std::uint32_t frameIndex) {
    logMessage("inFrameTime: %lld", static_cast<long long>(request.frameTime));
    logMessage("frameIndex:  %u (total: %u)", static_cast<unsigned>(frameIndex),
               static_cast<unsigned>(video.numFrames()));
}

ORVANTIS_COLD void logFrameFormats(const FrameRequest& request) {
    logMessage("inNumFrameFormats: %d", static_cast<int>(request.frameFormats.size()));
    int number = 0;
    for (const host::imFrameFormat& format : request.frameFormats) {
        const std::uint32_t pixelFormat = format.inPixelFormat;
        logMessage("inFrameFormats[%d]: %d %d %s [%s]", number++, static_cast<int>(format.inFrameWidth),
                   static_cast<int>(format.inFrameHeight), host::pixelFormatName(pixelFormat),
                   fourccToString(pixelFormat).c_str());
    }
}

ORVANTIS_COLD void logStart(const OrvantisFrameFormat& coded, const FormatInfo& info) {
    logMessage("Starting decompression: %s [%s]%s -> %s [%s] (pr: %s [%s])%s%s", codecTypeName(coded.type),
               colorSpaceName(coded.colorSpace), coded.range == kOrvantisRangeFull ? " [FULL]" : " [LIMITED]",
               codecTypeName(info.orvType), colorSpaceName(info.colorSpace),
               host::pixelFormatName(info.pixelFormat), fourccToString(info.pixelFormat).c_str(),
               info.isTopLeft() ? "" : " [flipped]", info.isAdobe16u() ? " [0-32768]" : "");
}

// A decompression that the library refuses to end is given up all the same: beginning anew is the only way
// on.
void endDecompression(DecodeSession& session) {
    logMessage("Pixel format changed, ending decompression");
    session.begun = false;
    try {
        session.codec.decompressEnd();
    } catch (const std::exception& error) {
        logMessage("Internal error: decompressEnd() failed: %s", error.what());
    }
}

host::ImporterResult beginDecompression(const VideoInfo& video, DecodeSession& session,
                                        const FormatInfo& info) {
    if (logEnabled()) {
        logStart(video.compressedFormat(), info);
    }
    try {
        session.output = session.codec.decompressBegin(video.formatData(), outputFormatOf(info));
    } catch (const std::exception& error) {
        logMessage("Decompress begin failed: %s", error.what());
        return host::ImporterResult::imBadCompression;
    }
    session.begun = true;
    session.pixelFormat = info.pixelFormat;
    return host::ImporterResult::imNoErr;
}

host::ImporterResult createFrame(ImporterSuites& suites, FrameRequest& request) {
    const host::imFrameFormat wanted = request.frameFormats.front();
    const host::prRect bounds{0, 0, wanted.inFrameWidth, wanted.inFrameHeight};
    host::PPixHand frame = nullptr;
    const SuiteResult result{suites.ppixCreator.get().CreatePPix(&frame, host::kBufferAccessWriteOnly,
                                                                 wanted.inPixelFormat, &bounds)};
    if (result != SuiteResult::kNoError || frame == nullptr) {
        logMessage("ERROR: CreatePPix() failed: %d", static_cast<int>(result));
        return host::ImporterResult::imOtherErr;
    }
    request.frame = HostFrame(*request.ppixSuite, frame);
    return host::ImporterResult::imNoErr;
}

// Where the pixels of the request's frame go. A frame whose place is not known is not decoded into: the host
// would show what happened to be in it.
host::ImporterResult describeFrame(const host::PPixSuite& suite, const FrameRequest& request,
                                   std::int32_t height, OrvantisOutputBuffer& output) {
    char* pixels = nullptr;
    SuiteResult result{suite.GetPixels(request.frame.get(), host::kBufferAccessWriteOnly, &pixels)};
    if (result != SuiteResult::kNoError || pixels == nullptr) {
        logMessage("ERROR: GetPixels() failed: %d", static_cast<int>(result));
        return host::ImporterResult::imOtherErr;
    }
    std::int32_t rowBytes = 0;
    result = SuiteResult{suite.GetRowBytes(request.frame.get(), &rowBytes)};
    if (result != SuiteResult::kNoError) {
        logMessage("ERROR: GetRowBytes() failed: %d", static_cast<int>(result));
        return host::ImporterResult::imOtherErr;
    }
    output.pixels = pixels;
    // The library takes both as 32 bits: negative row bytes keep their bit pattern, and the size wraps on
    // purpose.
    output.rowPitch = static_cast<std::uint32_t>(rowBytes);
    output.totalBytes = output.rowPitch * static_cast<std::uint32_t>(height);
    return host::ImporterResult::imNoErr;
}

}  // namespace

host::ImporterResult prepareFrame(const VideoInfo& video, FrameRequest& request) {
    const std::uint32_t frameIndex = video.frameIndexAt(request.frameTime);
    if (logEnabled()) {
        logPlace(video, request, frameIndex);
    }
    if (std::int64_t{frameIndex} >= video.numFrames()) {
        logMessage("frameIndex out of bounds");
        return host::ImporterResult::imFrameNotFound;
    }
    request.frameIndex = frameIndex;
    if (logEnabled()) {
        logFrameFormats(request);
    }

    if (request.frameFormats.empty()) {
        logMessage("ERROR: frameFormats is empty");
        return host::ImporterResult::imOtherErr;
    }
    host::imFrameFormat& wanted = request.frameFormats.front();
    if (wanted.inFrameWidth == 0) {
        wanted.inFrameWidth = video.width();
    }
    if (wanted.inFrameHeight == 0) {
        wanted.inFrameHeight = video.height();
    }
    if (wanted.inFrameWidth != video.width() || wanted.inFrameHeight != video.height()) {
        logMessage("ERROR: frame size mismatch (%d, %d) != (%d, %d)", static_cast<int>(wanted.inFrameWidth),
                   static_cast<int>(wanted.inFrameHeight), static_cast<int>(video.width()),
                   static_cast<int>(video.height()));
        return host::ImporterResult::imOtherErr;
    }
    return host::ImporterResult::imNoErr;
}

host::ImporterResult readFrame(const VideoInfo& video, fileio::File& file, FrameRequest& request) {
    using Outcome = FrameChunkRead::Outcome;
    const FrameChunkRead read =
        readFrameChunk(file, video.stream(), request.frameIndex, video.numFrames(), request.chunk);
    if (read.substitute) {
        logMessage("Empty frame: %u, frame read: %u", static_cast<unsigned>(request.frameIndex),
                   static_cast<unsigned>(*read.substitute));
    }
    // not covered when true: every outcome has its case
    switch (read.outcome) {
        case Outcome::kRead:
            return host::ImporterResult::imNoErr;
        case Outcome::kNoneWithData:
            return host::ImporterResult::imFrameNotFound;
        case Outcome::kFailed:
            break;
    }
    logMessage("Failed to read frame from AVI: %s", read.failure.c_str());
    return host::ImporterResult::imFileReadFailed;
}

host::ImporterResult decodeFrame(const VideoInfo& video, ImporterSuites& suites, FrameRequest& request) {
    // First of all, so that a format which nobody offered leaves the running session alone.
    const FormatInfo& info = GetFormatInfo_by_pixelFormat(request.frameFormats.front().inPixelFormat);

    std::optional<FrameDecoder::Use> use;
    try {
        use.emplace(video.decoder());
    } catch (const OrvantisError& error) {
        // Another call is decoding, and the library has no second session for this one.
        logMessage("Decompress begin failed: %s", error.what());
        return host::ImporterResult::imBadCompression;
    }
    DecodeSession& session = use->session();
    if (session.begun && session.pixelFormat != info.pixelFormat) {
        endDecompression(session);
        request.formatChanged = true;
    }
    if (!session.begun) {
        const host::ImporterResult result = beginDecompression(video, session, info);
        if (result != host::ImporterResult::imNoErr) {
            return result;
        }
    }

    host::ImporterResult result = createFrame(suites, request);
    if (result != host::ImporterResult::imNoErr) {
        return result;
    }

    OrvantisOutputBuffer output{};
    result = describeFrame(suites.ppix.get(), request, video.height(), output);
    if (result != host::ImporterResult::imNoErr) {
        return result;
    }

    try {
        session.codec.decompress({request.chunk.buffer.data(), request.chunk.bytes}, output);
    } catch (const std::exception& error) {
        logMessage("Decompress failed: %s", error.what());
        return host::ImporterResult::imBadCompression;
    }
    return host::ImporterResult::imNoErr;
}

}  // namespace orvantis
