// Describes sound by a code that no host knows.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    if (call.is(host::imGetInfo8) && result == host::imNoErr) {
        call.record<host::imFileInfoRec8>()->audInfo.sampleType = 99;
    }
    return result;
}
