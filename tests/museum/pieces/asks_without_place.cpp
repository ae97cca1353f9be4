// Asks for the ticks of a second without a place for the answer.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    if (call.is(host::imGetSourceVideo) && result == host::imNoErr) {
        (void)call.clip()->time->GetTicksPerSecond(nullptr);
    }
    return result;
}
