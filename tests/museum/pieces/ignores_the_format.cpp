// Delivers what it has whatever pixel format is asked for.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const auto* const record = call.record<host::imSourceVideoRec>();
    if (!call.is(host::imGetSourceVideo) || record == nullptr || record->inNumFrameFormats < 1) {
        return call.correct();
    }
    const host::imFrameFormat any{0, 0, 0};
    host::imSourceVideoRec request = *record;
    request.inFrameFormats = &any;
    request.inNumFrameFormats = 1;
    return Call{call.selector, call.parms, call.param1, &request}.correct();
}
