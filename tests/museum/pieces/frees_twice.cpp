// Frees a block of the host a second time.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    if (call.is(host::imInit) && call.parms != nullptr) {
        void* const block = call.memory()->newPtr(32);
        call.memory()->disposePtr(block);
        call.memory()->disposePtr(block);
    }
    return call.correct();
}
