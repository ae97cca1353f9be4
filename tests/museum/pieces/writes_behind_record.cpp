// Writes a field that this generation of the host has not.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    if (call.is(host::imGetIndFormat) && call.param2 != nullptr) {
        call.record<unsigned char>()[sizeof(host::imIndFormatRec)] = 0;
    }
    return result;
}
