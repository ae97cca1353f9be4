// Shows another picture when it goes backwards, but not back to the beginning.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static host::PrTime last = 0;
    const std::int32_t result = call.correctWithoutAsync();
    if (call.is(host::imGetSourceVideo) && result == host::imNoErr) {
        const host::PrTime time = call.record<host::imSourceVideoRec>()->inFrameTime;
        std::int32_t rowBytes = 0;
        char* const pixels = call.pixels(rowBytes);
        pixels[0] = static_cast<char>(time < last && time > 0 ? ~pixels[0] : pixels[0]);
        last = time;
    }
    return result;
}
