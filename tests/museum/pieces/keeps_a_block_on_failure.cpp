// Forgets what it took from the host when it gets no frame.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    if (call.is(host::imGetSourceVideo) && result == host::imMemErr) {
        (void)call.memory()->newPtr(64);
    }
    return result;
}
