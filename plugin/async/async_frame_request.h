// One frame that the host asked for ahead of need: the decode job, its places in the order of the steps, and
// the future through which the task on the thread pool hands over its result.
#pragma once

#include <cstdint>

#include "async/task_queue.h"
#include "async/turns.h"
#include "diag/atomic.h"
#include "diag/waiting.h"
#include "host/result_codes.h"
#include "video/frame_request.h"

namespace orvantis {

class OrvantisAsyncImporter;

/// Owned by the importer's request list until a handler takes it out. The task writes only into this request;
/// nobody else touches it before `result` is ready, but for `dropped` and for withdrawing its places. Never
/// outlives its task, and gives an undelivered frame back.
struct AsyncFrameRequest final : PoolTask {
    enum class Step : std::uint8_t { kPrepare, kRead, kDecode };

    explicit AsyncFrameRequest(OrvantisAsyncImporter& owner)
        : importer(&owner), result(promise.get_future()), readPlace(this), decodePlace(this) {}
    AsyncFrameRequest(const AsyncFrameRequest&) = delete;
    AsyncFrameRequest& operator=(const AsyncFrameRequest&) = delete;
    /// Waits for the task.
    ~AsyncFrameRequest() override {
        if (submitted && result.valid()) {
            result.wait();
        }
    }

    /// Goes on with the request where it stands.
    void run() noexcept override;

    OrvantisAsyncImporter* importer;
    FrameRequest job;
    std::uint32_t frameIndex = 0;
    Promise<host::ImporterResult> promise;
    Future<host::ImporterResult> result;  ///< of the decode task
    bool submitted = false;               ///< there is a task to wait for
    Step step = Step::kPrepare;           ///< the one that comes next
    Turns::Place readPlace;
    Turns::Place decodePlace;
    Atomic<bool> dropped = false;  ///< nobody wants the frame any more: no further step
};

}  // namespace orvantis
