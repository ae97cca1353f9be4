// Shows the same frame otherwise each time.
#include <mutex>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static std::mutex mutex;
    static char noise = 0;
    const std::lock_guard lock(mutex);
    const std::int32_t result = call.correctWithoutAsync();
    if (call.is(host::imGetSourceVideo) && result == host::imNoErr) {
        std::int32_t rowBytes = 0;
        noise = static_cast<char>(noise == 100 ? 0 : noise + 1);
        call.pixels(rowBytes)[0] = noise;
    }
    return result;
}
