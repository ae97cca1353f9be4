// Hands over a sub-type with an empty name.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    if (call.is(host::imGetSubTypeNames) && result == host::imNoErr) {
        auto* const row = *static_cast<host::imSubTypeDescriptionRec**>(call.param2);
        row->subTypeName[0] = 0;
    }
    return result;
}
