// Gives another file reference in the record than beside it.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    if (call.is(host::imOpenFile8) && result == host::imNoErr) {
        call.record<host::imFileOpenRec8>()->fileinfo.fileref = 0;
    }
    return result;
}
