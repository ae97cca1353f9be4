#include "async/orvantis_async_importer.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "async/thread_pool.h"
#include "diag/log.h"
#include "host/pixel_formats.h"
#include "host/result_codes.h"
#include "video/frame_import.h"

namespace orvantis {

namespace {

/// More buffers than a host keeps requests in flight are not worth keeping.
constexpr std::size_t kMaxSpareChunks = 16;

void logHandler(const char* name) {
    logMessage("----------------------");
    logMessage("[%s]", name);
}

void logResult(const char* name, std::int32_t result) {
    logMessage("    %s: [%s] (%d)", name, host::asyncErrorName(static_cast<std::uint32_t>(result)), result);
}

}  // namespace

OrvantisAsyncImporter::OrvantisAsyncImporter(const host::imStdParms* stdParms) : OrvantisImporter(stdParms) {
    m_spareChunks.reserve(kMaxSpareChunks);
    logMessage("OrvantisAsyncImporter::OrvantisAsyncImporter()");
}

OrvantisAsyncImporter::~OrvantisAsyncImporter() {
    logMessage("OrvantisAsyncImporter::~OrvantisAsyncImporter()");
    // Here and not with the members: the tasks use the base's analysis and suites and the mutexes of this
    // object.
    m_requests.clear();
}

std::int32_t OrvantisAsyncImporter::openLike(const OrvantisImporter& synchronous) {
    if (!open(synchronous.filePath().c_str(), synchronous.streamIndex(), synchronous.openRequest())) {
        return host::imBadFile;
    }
    const std::int32_t result = parse(synchronous.streamIndex());
    if (result != host::imNoErr && result != host::imIterateStreams && result != host::imBadStreamIndex)
        return result;
    suites();
    return host::imNoErr;
}

std::int32_t OrvantisAsyncImporter::decode(FrameRequest& job) {
    const VideoInfo& video = requireVideoInfo();
    std::int32_t result = prepareFrame(video, job);
    if (result != host::imNoErr) return result;
    {
        const std::lock_guard lock(m_readMutex);
        result = readFrame(video, file(), job);
    }
    if (result != host::imNoErr) return result;
    const std::lock_guard lock(m_decodeMutex);
    return decodeFrame(video, suites(), job);
}

OrvantisAsyncImporter::RequestList::iterator OrvantisAsyncImporter::addRequest(
    const host::imSourceVideoRec& record) {
    auto created = std::make_unique<AsyncFrameRequest>();
    AsyncFrameRequest& request = *created;
    request.importer = this;
    request.frameIndex = requireVideoInfo().frameIndexAt(record.inFrameTime);
    request.job.assign(record.inFrameTime, record.inFrameFormats, record.inNumFrameFormats,
                       suites().ppix.get());
    if (!m_spareChunks.empty()) {
        request.job.chunk = std::move(m_spareChunks.back());
        m_spareChunks.pop_back();
    }
    m_requests.push_back(std::move(created));
    const auto position = std::prev(m_requests.end());
    try {
        request.result = runOnThreadPool([this, &request] { return decode(request.job); });
    } catch (...) {
        m_requests.erase(position);  // a request without a task would never be answered
        throw;
    }
    return position;
}

OrvantisAsyncImporter::RequestList::iterator OrvantisAsyncImporter::findRequest(std::uint32_t frameIndex) {
    return std::find_if(m_requests.begin(), m_requests.end(),
                        [frameIndex](const auto& request) { return request->frameIndex == frameIndex; });
}

void OrvantisAsyncImporter::recycle(std::unique_ptr<AsyncFrameRequest> request) {
    if (m_spareChunks.size() < kMaxSpareChunks) m_spareChunks.push_back(std::move(request->job.chunk));
}

std::int32_t OrvantisAsyncImporter::onInitiateAsyncRead(const host::imSourceVideoRec& record) {
    const std::lock_guard lock(m_requestMutex);
    logHandler("OnInitiateAsyncRead");
    const std::int64_t frameTime = record.inFrameTime;
    const std::uint32_t frameIndex = requireVideoInfo().frameIndexAt(frameTime);
    logMessage("REQUEST: Adding: %d, frameTime: %lld", static_cast<int>(frameIndex),
               static_cast<long long>(frameTime));
    addRequest(record);
    logResult("OnInitiateAsyncRead", host::aiNoError);
    return host::aiNoError;
}

std::int32_t OrvantisAsyncImporter::onGetFrame(const host::imSourceVideoRec& record) {
    std::unique_lock lock(m_requestMutex);
    logHandler("OnGetFrame");
    const VideoInfo& video = requireVideoInfo();
    host::PPixHand* const outFrame = record.outFrame;
    if (outFrame == nullptr) throw std::logic_error("outFrame is NULL");

    const std::int64_t frameTime = record.inFrameTime;
    const std::uint32_t frameIndex = video.frameIndexAt(frameTime);
    logMessage("REQUEST: Requesting: %d, frameTime: %lld", static_cast<int>(frameIndex),
               static_cast<long long>(frameTime));
    auto position = findRequest(frameIndex);
    if (position == m_requests.end()) {
        logMessage("REQUEST: ERROR: Frame not found: %d, frameTime: %lld", static_cast<int>(frameIndex),
                   static_cast<long long>(frameTime));
        position = addRequest(record);
    }
    std::unique_ptr<AsyncFrameRequest> request = std::move(*position);
    m_requests.erase(position);

    lock.unlock();
    const std::int32_t result = request->result.get();
    lock.lock();

    std::int32_t code = host::aiUnknownError;
    if (result == host::imNoErr) {
        logMessage("Decoded %d: %s", static_cast<int>(frameIndex),
                   host::pixelFormatName(request->job.frameFormats.front().inPixelFormat));
        code = host::aiNoError;
    }
    logMessage("    %s: [%s] (%d), [%s] (%d)", "OnGetFrame",
               host::asyncErrorName(static_cast<std::uint32_t>(code)), code,
               host::errorName(static_cast<std::uint32_t>(result)), result);
    // Last of all, so that nothing that fails on the way can lose the frame.
    if (result == host::imNoErr) *outFrame = request->job.frame.release();
    recycle(std::move(request));
    return code;
}

std::int32_t OrvantisAsyncImporter::onFlush() {
    const std::lock_guard lock(m_requestMutex);
    logHandler("OnFlush");
    static_cast<void>(requireVideoInfo());
    m_requests.clear();  // each waits for its task
    logResult("OnFlush", host::aiNoError);
    return host::aiNoError;
}

}  // namespace orvantis
