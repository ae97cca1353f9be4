// Announces more channels than any host has.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    if (call.is(host::imGetInfo8) && result == host::imNoErr) {
        call.record<host::imFileInfoRec8>()->audInfo.numChannels = 1000;
    }
    return result;
}
