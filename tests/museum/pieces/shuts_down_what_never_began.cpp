// Cannot be shut down when it was not started.
#include <atomic>
#include <cstdlib>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static std::atomic<bool> started{false};
    started = started || call.is(host::imInit);
    if (call.is(host::imShutdown) && !started) {
        std::abort();
    }
    return call.correct();
}
