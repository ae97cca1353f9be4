// Writes a byte behind a block of the host.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    if (call.is(host::imInit) && call.parms != nullptr) {
        if (auto* const block = static_cast<char*>(call.memory()->newPtr(32))) {
            block[32] = 0;
            call.memory()->disposePtr(block);
        }
    }
    return call.correct();
}
