// Creates a frame that nobody gets, for a request that takes any format.
#include "host/pixel_formats.h"
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    if (call.is(host::imGetSourceVideo) && result == host::imNoErr &&
        call.record<host::imSourceVideoRec>()->inNumFrameFormats == 0) {
        const host::prRect bounds{0, 0, 4, 4};
        host::PPixHand frame = nullptr;
        (void)call.clip()->creator->CreatePPix(&frame, host::kBufferAccessWriteOnly,
                                               host::PrPixelFormat_BGRA_4444_8u, &bounds);
    }
    return result;
}
