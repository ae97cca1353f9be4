// Keeps four kibibytes for every file behind the two hundredth.
#include <mutex>
#include <vector>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static std::mutex mutex;
    static std::vector<std::vector<char>> kept;
    static int closed = 0;
    const std::lock_guard lock(mutex);
    closed = call.is(host::imInit) ? 0 : closed;
    const std::int32_t result = call.correct();
    if (call.is(host::imCloseFile) && ++closed > 200) {
        kept.emplace_back(4096, 'x');
    }
    return result;
}
