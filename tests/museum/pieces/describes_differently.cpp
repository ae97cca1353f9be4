// Describes a clip otherwise each time.
#include <mutex>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static std::mutex mutex;
    static std::int16_t depth = 24;
    const std::lock_guard lock(mutex);
    const std::int32_t result = call.correct();
    if (call.is(host::imGetInfo8) && result == host::imNoErr) {
        depth = depth == 24 ? 32 : 24;
        call.record<host::imFileInfoRec8>()->vidInfo.depth = depth;
    }
    return result;
}
