// Cannot say what it is before it was started.
#include <atomic>
#include <cstdlib>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static std::atomic<bool> started{false};
    started = started || call.is(host::imInit);
    if (call.is(host::imGetIndFormat) && !started) {
        std::abort();
    }
    return call.correct();
}
