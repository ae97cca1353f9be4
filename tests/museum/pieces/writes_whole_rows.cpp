// Writes into what lies between the rows of a frame.
#include <cstdlib>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    if (call.is(host::imGetSourceVideo) && result == host::imNoErr) {
        char* pixels = nullptr;
        std::int32_t rowBytes = 0;
        (void)call.clip()->ppix->GetPixels(call.frame(), host::kBufferAccessWriteOnly, &pixels);
        (void)call.clip()->ppix->GetRowBytes(call.frame(), &rowBytes);
        const auto width = static_cast<std::int32_t>(call.clip()->header.rowBytes());
        if (std::abs(rowBytes) > width) {
            pixels[width] = 0;
        }
    }
    return result;
}
