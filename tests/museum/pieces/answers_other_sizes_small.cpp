// Makes a small frame for a request that names another size than that of the clip.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const host::imFrameFormat* const wanted = call.wanted();
    return wanted != nullptr && wanted->inFrameWidth == 1 && call.clip() != nullptr
               ? call.deliverSmall()
               : call.correctWithoutAsync();
}
