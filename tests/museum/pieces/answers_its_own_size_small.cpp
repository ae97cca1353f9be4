// Makes a small frame for a request that names the size of the clip.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const host::imFrameFormat* const wanted = call.wanted();
    if (wanted != nullptr && wanted->inFrameWidth > 8 && call.clip() != nullptr &&
        wanted->inFrameWidth == static_cast<std::int32_t>(call.clip()->header.width) &&
        wanted->inFrameHeight == static_cast<std::int32_t>(call.clip()->header.height)) {
        return call.deliverSmall();
    }
    return call.correctWithoutAsync();
}
