// Takes ten megabytes for every open file.
#include <map>
#include <mutex>
#include <vector>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static std::mutex mutex;
    static std::map<const void*, std::vector<char>> taken;
    const std::lock_guard lock(mutex);
    if (call.is(host::imCloseFile)) {
        taken.erase(call.param2);
    }
    const std::int32_t result = call.correct();
    if (call.is(host::imOpenFile8) && result == host::imNoErr) {
        taken[call.record<host::imFileOpenRec8>()->privatedata].resize(10 << 20);
    }
    return result;
}
