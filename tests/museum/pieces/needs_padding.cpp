// Shows other pictures where rows are not padded.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correctWithoutAsync();
    if (call.is(host::imGetSourceVideo) && result == host::imNoErr && call.parms->imInterfaceVer >= 23) {
        std::int32_t rowBytes = 0;
        char* const first = call.pixels(rowBytes);
        if (rowBytes == static_cast<std::int32_t>(call.clip()->header.rowBytes())) {
            first[0] = static_cast<char>(first[0] + 1);
        }
    }
    return result;
}
