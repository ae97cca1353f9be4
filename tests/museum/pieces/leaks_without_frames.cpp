// Keeps a block when the host refuses a frame three times running.
#include <mutex>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static std::mutex mutex;
    static int refused = 0;
    const std::lock_guard lock(mutex);
    const std::int32_t result = call.correct();
    if (call.is(host::imGetSourceVideo)) {
        refused = result == host::imMemErr ? refused + 1 : 0;
        if (refused == 3) {
            (void)call.memory()->newPtr(10);
        }
    }
    return result;
}
