// Refuses to start after it was shut down.
#include <atomic>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static std::atomic<bool> ended{false};
    ended = ended || call.is(host::imShutdown);
    return ended && call.is(host::imInit) ? host::imOtherErr : call.correct();
}
