// Does not say that it takes the records of today.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    return call.is(host::imGetSupports8) ? host::imUnsupported : call.correct();
}
