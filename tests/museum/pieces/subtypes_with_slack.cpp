// Asks for a byte more than its rows take.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    if (call.is(host::imGetSubTypeNames) && result == host::imNoErr) {
        call.memory()->setPtrSize(static_cast<void**>(call.param2),
                                  sizeof(host::imSubTypeDescriptionRec) + 1);
    }
    return result;
}
