// Promises a frame more than there is.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correctWithoutAsync();
    if (auto* const info = call.record<host::imFileInfoRec8>();
        call.is(host::imGetInfo8) && result == host::imNoErr) {
        info->vidDuration = info->vidDuration + info->vidSampleSize;
    }
    return result;
}
