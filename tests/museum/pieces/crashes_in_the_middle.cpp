// Crashes at a time before the first frame, when the request before named no format.
#include <cstdlib>
#include <mutex>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static std::mutex mutex;
    static bool namedNone = false;
    const std::lock_guard lock(mutex);
    if (const auto* const request = call.record<host::imSourceVideoRec>();
        call.is(host::imGetSourceVideo) && request != nullptr) {
        if (namedNone && request->inFrameTime < 0) {
            std::abort();
        }
        namedNone = request->inNumFrameFormats == 0;
    }
    return call.correct();
}
