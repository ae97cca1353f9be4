// Shows nothing more after a request behind the end.
#include <mutex>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static std::mutex mutex;
    static bool broken = false;
    const std::lock_guard lock(mutex);
    broken = broken && !call.is(host::imOpenFile8);
    if (call.is(host::imGetSourceVideo) && broken) {
        return host::imOtherErr;
    }
    const std::int32_t result = call.correctWithoutAsync();
    broken = broken || (call.is(host::imGetSourceVideo) && result == host::imFrameNotFound);
    return result;
}
