// Counts on the ticks of a second that most hosts have.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    host::PrTime ticks = 0;
    const auto clip = call.is(host::imGetSourceVideo) ? call.clip() : nullptr;
    if (clip == nullptr || clip->time->GetTicksPerSecond(&ticks) != 0) {
        return call.correct();
    }
    constexpr double kMostHosts = 254016000000.0;
    host::imSourceVideoRec request = *call.record<host::imSourceVideoRec>();
    if (static_cast<double>(ticks) != kMostHosts) {
        request.inFrameTime = static_cast<host::PrTime>(static_cast<double>(request.inFrameTime) *
                                                        (static_cast<double>(ticks) / kMostHosts));
    }
    return Call{call.selector, call.parms, call.param1, &request}.correct();
}
