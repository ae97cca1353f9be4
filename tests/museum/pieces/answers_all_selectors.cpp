// Says yes to what it does not know.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    return result == host::imUnsupported ? host::imNoErr : result;
}
