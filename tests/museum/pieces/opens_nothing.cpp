// Refuses every file.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    return call.is(host::imOpenFile8) ? host::imBadFile : call.correct();
}
