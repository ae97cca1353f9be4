// Does not start.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    return call.is(host::imInit) ? host::imOtherErr : call.correct();
}
