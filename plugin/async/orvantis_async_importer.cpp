#include "async/orvantis_async_importer.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <thread>
#include <utility>

#include "diag/log.h"
#include "host/pixel_formats.h"
#include "host/result_codes.h"
#include "video/frame_import.h"

namespace orvantis {

namespace {

void logHandler(const char* name) {
    logMessage("----------------------");
    logMessage("[%s]", name);
}

void logResult(const char* name, host::AsyncResult result) {
    logMessage("    %s: [%s] (%d)", name, host::asyncErrorName(result), host::numberOf(result));
}

}  // namespace

OrvantisAsyncImporter::OrvantisAsyncImporter(const host::imStdParms* stdParms) : OrvantisImporter(stdParms) {
    logMessage("OrvantisAsyncImporter::OrvantisAsyncImporter()");
}

OrvantisAsyncImporter::~OrvantisAsyncImporter() {
    logMessage("OrvantisAsyncImporter::~OrvantisAsyncImporter()");
    // Here and not with the members: the tasks use the base's analysis and suites and the mutexes of this
    // object.
    dropRequests();
}

host::ImporterResult OrvantisAsyncImporter::openLike(const OrvantisImporter& synchronous) {
    if (!open(synchronous.filePath().c_str(), synchronous.streamIndex(), synchronous.openRequest())) {
        return host::ImporterResult::imBadFile;
    }
    const host::ImporterResult result = parse(synchronous.streamIndex());
    if (result != host::ImporterResult::imNoErr && result != host::ImporterResult::imIterateStreams &&
        result != host::ImporterResult::imBadStreamIndex) {
        return result;
    }
    suites();
    return host::ImporterResult::imNoErr;
}

void AsyncFrameRequest::run() noexcept {
    importer->work(*this);
}

void OrvantisAsyncImporter::work(AsyncFrameRequest& first) noexcept {
    std::uint64_t waiting = 0;
    for (AsyncFrameRequest* request = &first;;) {
        request = advance(*request);
        if (request == nullptr) {
            return;
        }
        // The others that share the pool are not to wait behind a clip that keeps its threads busy: what is
        // still there after a whole step finds no thread.
        const std::uint64_t before = std::exchange(waiting, m_pool->nextToStart());
        if (waiting != 0 && waiting == before) {
            m_pool->submit(*request);
            return;
        }
    }
}

host::ImporterResult OrvantisAsyncImporter::runStep(AsyncFrameRequest& request) {
    const VideoInfo& video = requireVideoInfo();
    // not covered when true: every step has its case
    switch (request.step) {
        case AsyncFrameRequest::Step::kPrepare:
            return prepareFrame(video, request.job);
        case AsyncFrameRequest::Step::kRead: {
            const std::lock_guard lock(m_readMutex);
            return readFrame(video, file(), request.job);
        }
        case AsyncFrameRequest::Step::kDecode:
            break;
    }
    const std::lock_guard lock(m_decodeMutex);
    return decodeFrame(video, suites(), request.job);
}

AsyncFrameRequest* OrvantisAsyncImporter::advance(AsyncFrameRequest& request) noexcept {
    using Step = AsyncFrameRequest::Step;
    for (;;) {
        host::ImporterResult code = host::ImporterResult::imOtherErr;
        std::exception_ptr failure;
        if (request.step == Step::kDecode) {
            // Whoever waited for the frame before is ready now, perhaps on this processor, which the step
            // keeps busy for as long as it takes: a system that does not interrupt it would show that frame a
            // step late.
            std::this_thread::yield();
        }
        const bool dropped = request.dropped;
        if (!dropped) {
            try {
                code = runStep(request);
            } catch (...) {
                failure = std::current_exception();
            }
        }
        if (dropped || failure || code != host::ImporterResult::imNoErr || request.step == Step::kDecode) {
            return finish(request, code, failure);
        }
        if (request.step == Step::kPrepare) {
            request.step = Step::kRead;
            if (!Turns::enterOrPark(request.readPlace)) {
                return nullptr;
            }
        } else {
            request.step = Step::kDecode;
            auto* const reader = static_cast<AsyncFrameRequest*>(m_readTurns.leave(request.readPlace));
            if (!Turns::enterOrPark(request.decodePlace)) {
                return reader;
            }
            // Decoded on another thread while this one reads on. It is the one that waits, for the device,
            // and leaves its processor to whichever thread the system has put behind it.
            if (reader != nullptr) {
                m_pool->submit(request);
                return reader;
            }
        }
    }
}

AsyncFrameRequest* OrvantisAsyncImporter::finish(AsyncFrameRequest& request, host::ImporterResult code,
                                                 const std::exception_ptr& failure) noexcept {
    auto* const reader = static_cast<AsyncFrameRequest*>(m_readTurns.leave(request.readPlace));
    auto* const decoder = static_cast<AsyncFrameRequest*>(m_decodeTurns.leave(request.decodePlace));
    // not covered when true: who is next to read is next to decode, and parked for one of them at most
    if (reader != nullptr && decoder != nullptr) {
        m_pool->submit(*reader);
    }
    // With the result whoever waits for it may destroy the request, while this thread is still inside the
    // call that makes it ready: the promise must be this thread's own. Nothing of the request or, unless
    // there is another to go on with, of the importer is touched from here on.
    Promise<host::ImporterResult> promise = std::move(request.promise);
    if (failure) {
        promise.set_exception(failure);
    } else {
        promise.set_value(code);
    }
    return decoder != nullptr ? decoder : reader;
}

OrvantisAsyncImporter::RequestList::iterator OrvantisAsyncImporter::addRequest(
    const host::imSourceVideoRec& record) {
    if (!m_pool) {
        m_pool.emplace();
    }
    auto created = std::make_unique<AsyncFrameRequest>(*this);
    AsyncFrameRequest& request = *created;
    request.frameIndex = requireVideoInfo().frameIndexAt(record.inFrameTime);
    request.job.assign(record.inFrameTime, record.inFrameFormats, record.inNumFrameFormats,
                       suites().ppix.get());
    request.job.chunk = m_spareChunks.take();
    m_requests.push_back(std::move(created));
    // Nothing can fail from here on: every place that is booked is left again by the task.
    m_readTurns.book(request.readPlace);
    m_decodeTurns.book(request.decodePlace);
    request.submitted = true;
    m_pool->submit(request);
    return std::prev(m_requests.end());
}

OrvantisAsyncImporter::RequestList::iterator OrvantisAsyncImporter::findRequest(std::uint32_t frameIndex) {
    return std::find_if(m_requests.begin(), m_requests.end(), [frameIndex](const auto& request) {
        // not always covered: a get has to come in while a close has dropped and not yet ended
        return request->frameIndex == frameIndex && !request->dropped;
    });
}

void OrvantisAsyncImporter::recycle(std::unique_ptr<AsyncFrameRequest> request) noexcept {
    m_spareChunks.put(std::move(request->job.chunk));
}

void OrvantisAsyncImporter::markDropped() noexcept {
    // All of them first, so that no later one begins a step on behalf of an earlier one that ends.
    for (const auto& request : m_requests) {
        request->dropped = true;
    }
    for (const auto& request : m_requests) {
        const bool wasToRead = Turns::withdraw(request->readPlace);
        const bool wasToDecode = Turns::withdraw(request->decodePlace);
        // A parked one has no task that could end it, and the turn before it may be that of a request which
        // was taken out of the list: a flush does not wait for that one.
        if (wasToRead || wasToDecode) {
            m_pool->submit(*request);
        }
    }
}

void OrvantisAsyncImporter::dropRequests() noexcept {
    markDropped();
    m_requests.clear();  // each waits for its task
}

void OrvantisAsyncImporter::dropPending() noexcept {
    const std::lock_guard lock(m_requestMutex);
    markDropped();
}

host::AsyncResult OrvantisAsyncImporter::onInitiateAsyncRead(const host::imSourceVideoRec& record) {
    const std::lock_guard lock(m_requestMutex);
    logHandler("OnInitiateAsyncRead");
    const std::int64_t frameTime = record.inFrameTime;
    const std::uint32_t frameIndex = requireVideoInfo().frameIndexAt(frameTime);
    logMessage("REQUEST: Adding: %d, frameTime: %lld", static_cast<int>(frameIndex),
               static_cast<long long>(frameTime));
    addRequest(record);
    logResult("OnInitiateAsyncRead", host::AsyncResult::aiNoError);
    return host::AsyncResult::aiNoError;
}

host::AsyncResult OrvantisAsyncImporter::onGetFrame(const host::imSourceVideoRec& record) {
    std::unique_lock lock(m_requestMutex);
    logHandler("OnGetFrame");
    const VideoInfo& video = requireVideoInfo();
    host::PPixHand* const outFrame = record.outFrame;
    if (outFrame == nullptr) {
        throw std::logic_error("outFrame is NULL");
    }

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
    const host::ImporterResult result = request->result.get();
    lock.lock();

    host::AsyncResult code = host::AsyncResult::aiUnknownError;
    if (result == host::ImporterResult::imNoErr) {
        logMessage("Decoded %d: %s", static_cast<int>(frameIndex),
                   host::pixelFormatName(request->job.frameFormats.front().inPixelFormat));
        code = host::AsyncResult::aiNoError;
    }
    logMessage("    %s: [%s] (%d), [%s] (%d)", "OnGetFrame", host::asyncErrorName(code), host::numberOf(code),
               host::errorName(result), host::numberOf(result));
    // Last of all, so that nothing that fails on the way can lose the frame.
    if (result == host::ImporterResult::imNoErr) {
        *outFrame = request->job.frame.release();
    }
    recycle(std::move(request));
    return code;
}

host::AsyncResult OrvantisAsyncImporter::onFlush() {
    const std::lock_guard lock(m_requestMutex);
    logHandler("OnFlush");
    static_cast<void>(requireVideoInfo());
    dropRequests();
    m_spareChunks.clear();
    logResult("OnFlush", host::AsyncResult::aiNoError);
    return host::AsyncResult::aiNoError;
}

}  // namespace orvantis
