#include "importer/media_selectors.h"

#include <mutex>
#include <stdexcept>

#include "diag/log.h"
#include "host/result_codes.h"
#include "importer/importer_calls.h"
#include "video/frame_import.h"

namespace orvantis {

namespace {

/// Gives an undelivered frame back however the call ends, before the request's storage is kept for the next
/// call.
class RequestEnd {
 public:
    explicit RequestEnd(FrameRequest& request) noexcept : m_request(request) {}
    RequestEnd(const RequestEnd&) = delete;
    RequestEnd& operator=(const RequestEnd&) = delete;
    ~RequestEnd() { m_request.frame.reset(); }

 private:
    FrameRequest& m_request;
};

}  // namespace

host::ImporterResult getSourceVideo(const host::imSourceVideoRec& record) {
    const ImporterCall call(record.inPrivateData);
    OrvantisImporter& importer = call.importer();
    host::PPixHand* const outFrame = record.outFrame;
    if (logEnabled()) [[unlikely]] {
        importer.logFile();
        logMessage("outFrame: %p", static_cast<const void*>(outFrame));
    }
    const VideoInfo& video = importer.requireVideoInfo();
    if (outFrame == nullptr) {
        throw std::logic_error("outFrame is NULL");
    }

    ImporterSuites& suites = importer.suites();
    const Loan<FrameRequest> loan(importer.spareRequest());
    FrameRequest& request = *loan;
    const RequestEnd end(request);
    request.assign(record.inFrameTime, record.inFrameFormats, record.inNumFrameFormats, suites.ppix.get());

    host::ImporterResult result = prepareFrame(video, request);
    if (result == host::ImporterResult::imNoErr) {
        const std::lock_guard lock(importer.filePosition());
        result = readFrame(video, importer.file(), request);
    }
    if (result == host::ImporterResult::imNoErr) {
        result = decodeFrame(video, suites, request);
    }
    if (result == host::ImporterResult::imNoErr) {
        *outFrame = request.frame.release();
    }
    return result;
}

host::ImporterResult importAudio7(const host::imImportAudioRec7& record) {
    const ImporterCall call(record.privateData);
    OrvantisImporter& importer = call.importer();
    importer.logFile();
    return importer.requireAudioInfo().importAudio(record);
}

host::ImporterResult getAudioChannelLayout(host::imGetAudioChannelLayoutRec& record) {
    const ImporterCall call(record.inPrivateData);
    OrvantisImporter& importer = call.importer();
    importer.logFile();
    return importer.requireAudioInfo().getChannelLayout(record);
}

}  // namespace orvantis
