// Opens a file and gives the host no name for it.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    if (call.is(host::imOpenFile8) && result == host::imNoErr) {
        (void)sample::importEntry(host::imCloseFile, call.parms, nullptr,
                                  call.record<host::imFileOpenRec8>()->privatedata);
        call.record<host::imFileOpenRec8>()->privatedata = nullptr;
    }
    return result;
}
