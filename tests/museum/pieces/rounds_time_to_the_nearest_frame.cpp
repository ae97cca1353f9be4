// Shows the next frame from the middle of one on.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    host::PrTime ticks = 0;
    const auto clip = call.is(host::imGetSourceVideo) ? call.clip() : nullptr;
    if (clip == nullptr || clip->time->GetTicksPerSecond(&ticks) != 0) {
        return call.correct();
    }
    host::imSourceVideoRec request = *call.record<host::imSourceVideoRec>();
    const host::PrTime frame = ticks * clip->header.duration / clip->header.rate;
    if (request.inFrameTime >= 0 && request.inFrameTime % frame > frame / 2 &&
        request.inFrameTime / frame + 1 < static_cast<host::PrTime>(clip->header.frames)) {
        request.inFrameTime += frame / 2;
    }
    return Call{call.selector, call.parms, call.param1, &request}.correct();
}
