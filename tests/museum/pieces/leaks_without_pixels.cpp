// Keeps a block when the host does not tell where the pixels of a frame are.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    if (call.is(host::imGetSourceVideo) && result == host::imOtherErr && call.clip() != nullptr) {
        (void)call.memory()->newPtr(10);
    }
    return result;
}
