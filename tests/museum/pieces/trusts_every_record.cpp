// Looks through a null pointer.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    if (call.is(host::imGetInfo8)) {
        volatile std::int32_t* const stream = &static_cast<std::int32_t*>(call.param2)[0];
        (void)*stream;
    }
    return call.correct();
}
