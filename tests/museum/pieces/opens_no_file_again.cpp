// Refuses to open a file again that it has let go of.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const auto* const record = call.record<host::imFileOpenRec8>();
    if (call.is(host::imOpenFile8) && record != nullptr && record->privatedata != nullptr) {
        return host::imBadFile;
    }
    return call.correct();
}
