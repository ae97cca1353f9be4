// Puts the size that it has into the host's list of formats.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    if (call.is(host::imGetSourceVideo) && result == host::imNoErr &&
        call.record<host::imSourceVideoRec>()->inNumFrameFormats > 0) {
        auto* const formats =
            const_cast<host::imFrameFormat*>(call.record<host::imSourceVideoRec>()->inFrameFormats);
        formats[0].inFrameWidth = static_cast<std::int32_t>(call.clip()->header.width);
    }
    return result;
}
