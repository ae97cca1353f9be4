// Fails to close a file that was quieted twice.
#include <mutex>
#include <set>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static std::mutex mutex;
    static std::multiset<const void*> quieted;
    const std::lock_guard lock(mutex);
    if (call.is(host::imQuietFile)) {
        quieted.insert(call.param2);
    }
    const bool twice = call.is(host::imCloseFile) && quieted.count(call.param2) > 1;
    if (call.is(host::imCloseFile)) {
        quieted.erase(call.param2);
    }
    const std::int32_t result = call.correct();
    return twice ? host::imOtherErr : result;
}
