// Offers two pixel formats, and delivers the one when it is asked for the other.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    if (call.is(host::imGetIndPixelFormat) && call.param1 == reinterpret_cast<void*>(std::uintptr_t{1})) {
        call.record<host::imIndPixelFormatRec>()->outPixelFormat = host::PrPixelFormat_BGRX_4444_8u;
        return host::imNoErr;
    }
    const auto* const request = call.record<host::imSourceVideoRec>();
    if (call.is(host::imGetSourceVideo) && request != nullptr && request->inNumFrameFormats == 1 &&
        request->inFrameFormats->inPixelFormat == host::PrPixelFormat_BGRX_4444_8u) {
        host::imFrameFormat other = *request->inFrameFormats;
        other.inPixelFormat = host::PrPixelFormat_BGRA_4444_8u;
        host::imSourceVideoRec changed = *request;
        changed.inFrameFormats = &other;
        return sample::importEntry(call.selector, call.parms, call.param1, &changed);
    }
    return call.correctWithoutAsync();
}
