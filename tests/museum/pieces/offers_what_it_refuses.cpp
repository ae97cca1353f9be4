// Offers a pixel format that it does not deliver.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    auto* const record = call.record<host::imIndPixelFormatRec>();
    if (call.is(host::imGetIndPixelFormat) && call.param1 == reinterpret_cast<void*>(std::uintptr_t{1})) {
        record->outPixelFormat = host::PrPixelFormat_BGRX_4444_8u;
        return host::imNoErr;
    }
    return call.correct();
}
