// Announces a format without a type.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    if (call.is(host::imGetIndFormat) && result == host::imNoErr) {
        call.record<host::imIndFormatRec>()->filetype = 0;
    }
    return result;
}
