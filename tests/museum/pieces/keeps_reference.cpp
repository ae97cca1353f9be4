// Lets a file go and does not tell the host so.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const bool keeps = call.is(host::imQuietFile) && call.param1 != nullptr;
    const host::imFileRef reference = keeps ? *static_cast<host::imFileRef*>(call.param1) : 0;
    const std::int32_t result = call.correct();
    if (keeps) {
        *static_cast<host::imFileRef*>(call.param1) = reference;
    }
    return result;
}
