// Gives another file reference in the record than beside it when a file is opened again.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const auto* const before = call.record<host::imFileOpenRec8>();
    const bool again = call.is(host::imOpenFile8) && before != nullptr && before->privatedata != nullptr;
    const std::int32_t result = call.correct();
    if (again && result == host::imNoErr) {
        call.record<host::imFileOpenRec8>()->fileinfo.fileref = 0;
    }
    return result;
}
