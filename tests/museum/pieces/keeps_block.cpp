// Takes a block of the host for each start and never frees it.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    if (call.is(host::imInit) && call.parms != nullptr) {
        (void)call.memory()->newPtr(32);
    }
    return call.correct();
}
