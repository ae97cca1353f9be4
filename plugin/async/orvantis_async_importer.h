// Decodes frames ahead of need on the system thread pool. A second importer on the same file: it opens the
// file again and has its own analysis, codec session and suites, so that it shares nothing with the
// synchronous one.
//
// Handlers are called from several host threads at once. Tasks never take m_requestMutex and never hold two
// mutexes, so handlers may wait for tasks while they hold it.
#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <vector>

#include "async/async_frame_request.h"
#include "host/records.h"
#include "importer/orvantis_importer.h"

namespace orvantis {

class OrvantisAsyncImporter : public OrvantisImporter {
 public:
    explicit OrvantisAsyncImporter(const host::imStdParms* stdParms);
    /// Destroys every request still pending; each waits for its task. No call may be running.
    ~OrvantisAsyncImporter() override;

    /// Opens the file of `synchronous` again, analyses the same stream and takes the suites. imNoErr, or the
    /// open's or the analysis' result code.
    std::int32_t openLike(const OrvantisImporter& synchronous);

    // The handlers return asynchronous result codes and throw std::logic_error "m_videoInfo is NULL" and what
    // the suites throw.

    /// Starts a decode task for the request; never waits for it.
    std::int32_t onInitiateAsyncRead(const host::imSourceVideoRec& record);
    /// Delivers the oldest pending request for the frame, decoding it now if none was initiated.
    std::int32_t onGetFrame(const host::imSourceVideoRec& record);
    /// Drops every pending request; returns when no task of this importer is running.
    std::int32_t onFlush();

 private:
    using RequestList = std::list<std::unique_ptr<AsyncFrameRequest>>;

    /// Appends a request and starts its task. Under m_requestMutex.
    RequestList::iterator addRequest(const host::imSourceVideoRec& record);
    /// The oldest pending request for a frame, or end. Under m_requestMutex.
    RequestList::iterator findRequest(std::uint32_t frameIndex);
    /// Destroys a request whose task has ended and keeps its buffer for the next one. Under m_requestMutex.
    void recycle(std::unique_ptr<AsyncFrameRequest> request);
    /// The decode task; on a pool thread. Importer result code.
    std::int32_t decode(FrameRequest& job);

    std::mutex
        m_requestMutex;  ///< guards m_requests and m_spareChunks; held by every handler for most of its work
    std::mutex m_readMutex;    ///< one task at a time reads the file
    std::mutex m_decodeMutex;  ///< one task at a time decompresses
    RequestList m_requests;    ///< in order of creation
    std::vector<FrameChunk>
        m_spareChunks;  ///< buffers of finished requests, so that playback does not allocate them anew
};

}  // namespace orvantis
