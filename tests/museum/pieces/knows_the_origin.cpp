// Puts the bottom row first, as most hosts want it, and does not ask.
#include <algorithm>

#include "host/pixel_formats.h"
#include "tests/museum/piece.h"

namespace {

// Puts the picture upside down.
void turn(const piece::Call& call) {
    std::int32_t rowBytes = 0;
    char* const pixels = call.pixels(rowBytes);
    const auto height = static_cast<std::ptrdiff_t>(call.clip()->header.height);
    for (std::ptrdiff_t y = 0; y < height / 2; ++y) {
        std::swap_ranges(pixels + y * rowBytes, pixels + y * rowBytes + call.clip()->header.rowBytes(),
                         pixels + (height - 1 - y) * rowBytes);
    }
}

}  // namespace

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correctWithoutAsync();
    if (call.is(host::imGetSourceVideo) && result == host::imNoErr) {
        std::int32_t topFirst = 0;
        (void)call.clip()->images->FormatIsOriginTopLeft(host::PrPixelFormat_BGRA_4444_8u, &topFirst);
        if (topFirst != 0) {
            turn(call);
        }
    }
    return result;
}
