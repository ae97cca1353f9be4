// Decodes frames ahead of need on a thread pool. A second importer on the same file: it opens the file again
// and has its own analysis, codec session and suites, so that it shares nothing with the synchronous one but
// the pool.
//
// Handlers are called from several host threads at once. Tasks never take m_requestMutex and never hold two
// mutexes, so handlers may wait for tasks while they hold it.
//
// A task runs the steps of its request, prepare, read and decode, as far as it is the request's turn. If it
// is not, the task ends there, and the thread is free; the request goes on when the one before it has left
// the step. So every thread of the pool that has a task is at work on a step, never waiting for another task,
// and what runs always comes to an end, however few threads there are and in whatever order tasks start. The
// first request in the order of a step is either at that step, or not yet so far and then running or waiting
// for a thread, or at an earlier step of which the same holds. So requests come to their turns without fail.
#pragma once

#include <cstdint>
#include <exception>
#include <list>
#include <memory>
#include <optional>

#include "async/async_frame_request.h"
#include "async/spare_chunks.h"
#include "async/thread_pool.h"
#include "async/turns.h"
#include "diag/mutex.h"
#include "host/records.h"
#include "host/result_codes.h"
#include "importer/orvantis_importer.h"

namespace orvantis {

class OrvantisAsyncImporter : public OrvantisImporter {
 public:
    explicit OrvantisAsyncImporter(const host::imStdParms* stdParms);
    /// Drops every request still pending, like onFlush(). No call may be running.
    ~OrvantisAsyncImporter() override;

    /// Opens the file of `synchronous` again, analyses the same stream and takes the suites. imNoErr, or the
    /// open's or the analysis' result code.
    host::ImporterResult openLike(const OrvantisImporter& synchronous);

    // The handlers return asynchronous result codes and throw std::logic_error "m_videoInfo is NULL" and what
    // the suites throw.

    /// Starts a decode task for the request; never waits for it.
    host::AsyncResult onInitiateAsyncRead(const host::imSourceVideoRec& record);
    /// Delivers the oldest pending request for the frame, decoding it now if none was initiated.
    host::AsyncResult onGetFrame(const host::imSourceVideoRec& record);
    /// Drops every pending request; returns when none of them has a task running any more. Steps that have
    /// begun are finished, no other begins. Frees the spare buffers.
    host::AsyncResult onFlush();
    /// The host closes this importer: as onFlush(), but waits for nothing. Calls still running get their
    /// frames.
    void dropPending() noexcept;

    /// Goes on with `first`, and then with requests whose turn came by that, for as long as there are any. On
    /// a pool thread; touches nothing of the importer once the last of them is answered.
    void work(AsyncFrameRequest& first) noexcept;

 private:
    using RequestList = std::list<std::unique_ptr<AsyncFrameRequest>>;

    /// Appends a request and starts its task. Under m_requestMutex.
    RequestList::iterator addRequest(const host::imSourceVideoRec& record);
    /// The oldest pending request for a frame, or end. Under m_requestMutex.
    RequestList::iterator findRequest(std::uint32_t frameIndex);
    /// Destroys a request whose task has ended and keeps its buffer for the next one. Under m_requestMutex.
    void recycle(std::unique_ptr<AsyncFrameRequest> request) noexcept;
    /// Has every request in the list end before its next step. Under m_requestMutex, or with no call running;
    /// so dropRequests(), which also waits for their tasks and empties the list.
    void markDropped() noexcept;
    void dropRequests() noexcept;

    // On a pool thread. Each may answer or hand on the request, which must not be touched afterwards; returns
    // a request that this thread is to go on with, or null.

    AsyncFrameRequest* advance(AsyncFrameRequest& request) noexcept;
    /// Gives up the request's places and makes its result ready: `code`, or the exception where there is one.
    AsyncFrameRequest* finish(AsyncFrameRequest& request, host::ImporterResult code,
                              const std::exception_ptr& failure) noexcept;
    /// Runs the step that the request stands at. Importer result code.
    host::ImporterResult runStep(AsyncFrameRequest& request);

    Mutex m_requestMutex;  ///< guards m_requests, m_spareChunks, m_pool; held by every handler for most
                           ///< of its work
    Turns m_readTurns;     ///< who comes to the reading next: requests in order of creation
    Mutex m_readMutex;     ///< one task at a time reads the file
    Turns m_decodeTurns;   ///< who comes to the decompressing next: the same order
    Mutex m_decodeMutex;   ///< one task at a time decompresses
    std::optional<ThreadPool> m_pool;  ///< from the first request on
    RequestList m_requests;            ///< in order of creation
    SpareChunks m_spareChunks;
};

}  // namespace orvantis
