// Shows the same frame otherwise each time.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static char noise = 0;
    const std::int32_t result = call.correctWithoutAsync();
    if (call.is(host::imGetSourceVideo) && result == host::imNoErr) {
        std::int32_t rowBytes = 0;
        noise = static_cast<char>(noise == 100 ? 0 : noise + 1);
        call.pixels(rowBytes)[0] = noise;
    }
    return result;
}
