// Disposes of a frame that does not exist.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    if (call.is(host::imGetSourceVideo) && result == host::imNoErr) {
        (void)call.clip()->ppix->Dispose(nullptr);
    }
    return result;
}
