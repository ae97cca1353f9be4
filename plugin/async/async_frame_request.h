// One frame that the host asked for ahead of need: the decode job, and the future through which the task on
// the thread pool hands over its result.
#pragma once

#include <cstdint>
#include <future>

#include "video/frame_request.h"

namespace orvantis {

class OrvantisAsyncImporter;

/// Owned by the importer's request list until a handler takes it out. The task writes only into `job`; nobody
/// else touches it before `result` is ready. Never outlives its task, and gives an undelivered frame back.
struct AsyncFrameRequest {
    AsyncFrameRequest() = default;
    AsyncFrameRequest(const AsyncFrameRequest&) = delete;
    AsyncFrameRequest& operator=(const AsyncFrameRequest&) = delete;
    /// Waits for the task.
    ~AsyncFrameRequest() {
        if (result.valid()) result.wait();
    }

    OrvantisAsyncImporter* importer = nullptr;
    FrameRequest job;
    std::uint32_t frameIndex = 0;
    std::future<std::int32_t> result;  ///< importer result code of the decode task
};

}  // namespace orvantis
