// Crashes at a time before the first frame, when the request before named no format.
#include <cstdlib>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static bool namedNone = false;
    if (const auto* const request = call.record<host::imSourceVideoRec>();
        call.is(host::imGetSourceVideo) && request != nullptr) {
        if (namedNone && request->inFrameTime < 0) {
            std::abort();
        }
        namedNone = request->inNumFrameFormats == 0;
    }
    return call.correct();
}
