// Leaves private data behind with a file that it refuses.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    auto* const record = call.record<host::imFileOpenRec8>();
    if (call.is(host::imOpenFile8) && result == host::imBadFile && record != nullptr) {
        record->privatedata = record;
    }
    return result;
}
