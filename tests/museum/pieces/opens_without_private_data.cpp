// Says that it has opened what it refuses, and gives the host no name for it.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    return call.is(host::imOpenFile8) && result == host::imBadFile && call.param2 != nullptr ? host::imNoErr
                                                                                             : result;
}
