// Writes a byte behind the memory of a frame.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    if (call.is(host::imGetSourceVideo) && result == host::imNoErr) {
        char* pixels = nullptr;
        std::int32_t rowBytes = 0;
        (void)call.clip()->ppix->GetPixels(call.frame(), host::kBufferAccessWriteOnly, &pixels);
        (void)call.clip()->ppix->GetRowBytes(call.frame(), &rowBytes);
        const std::ptrdiff_t rows =
            rowBytes < 0 ? -1 : static_cast<std::ptrdiff_t>(call.clip()->header.height);
        pixels[rows * rowBytes] = 0;
    }
    return result;
}
