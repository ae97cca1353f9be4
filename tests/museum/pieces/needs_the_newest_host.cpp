// Opens nothing under a host of the older generation.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    if (call.is(host::imOpenFile8) && call.parms != nullptr && call.parms->imInterfaceVer < 23) {
        return host::imOtherErr;
    }
    return call.correct();
}
