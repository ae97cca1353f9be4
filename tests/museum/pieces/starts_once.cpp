// Refuses a second start while it runs.
#include <atomic>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static std::atomic<bool> runs{false};
    if (call.is(host::imInit) && runs) {
        return host::imOtherErr;
    }
    runs = call.is(host::imInit) || (runs && !call.is(host::imShutdown));
    return call.correct();
}
