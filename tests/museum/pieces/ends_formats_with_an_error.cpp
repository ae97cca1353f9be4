// Ends its list of pixel formats with an error of its own.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    return call.is(host::imGetIndPixelFormat) && result == host::imBadFormatIndex ? host::imOtherErr : result;
}
