// Keeps four kibibytes for every file that it refuses.
#include <mutex>
#include <vector>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static std::mutex mutex;
    static std::vector<std::vector<char>> kept;
    const std::lock_guard lock(mutex);
    const std::int32_t result = call.correct();
    if (call.is(host::imOpenFile8) && result != host::imNoErr) {
        kept.emplace_back(4096, 'x');
    }
    return result;
}
