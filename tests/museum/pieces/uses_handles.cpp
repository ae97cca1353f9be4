// Takes memory by a function that is not for importers.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    if (call.is(host::imInit) && call.parms != nullptr) {
        (void)call.memory()->newHandle(16);
    }
    return call.correct();
}
