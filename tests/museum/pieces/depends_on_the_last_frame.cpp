// Shows another picture when it goes backwards, but not back to the beginning.
#include <map>
#include <mutex>
#include <thread>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    // By thread, so that calls on several at once break no other rule.
    static std::mutex mutex;
    static std::map<std::thread::id, host::PrTime> lastTimes;
    const std::int32_t result = call.correctWithoutAsync();
    if (call.is(host::imGetSourceVideo) && result == host::imNoErr) {
        const host::PrTime time = call.record<host::imSourceVideoRec>()->inFrameTime;
        std::int32_t rowBytes = 0;
        char* const pixels = call.pixels(rowBytes);
        const std::lock_guard lock(mutex);
        host::PrTime& last = lastTimes[std::this_thread::get_id()];
        pixels[0] = static_cast<char>(time < last && time > 0 ? ~pixels[0] : pixels[0]);
        last = time;
    }
    return result;
}
