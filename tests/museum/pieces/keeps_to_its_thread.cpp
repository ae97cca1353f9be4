// Shows pictures on the thread alone that has opened the file.
#include <mutex>
#include <set>
#include <thread>
#include <utility>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static std::mutex mutex;
    static std::set<std::pair<std::thread::id, const void*>> opened;
    const auto opener = [](const void* clip) { return std::pair(std::this_thread::get_id(), clip); };
    if (call.is(host::imGetSourceVideo) && call.clip() != nullptr) {
        const std::lock_guard lock(mutex);
        if (!opened.contains(opener(call.record<host::imSourceVideoRec>()->inPrivateData))) {
            return host::imOtherErr;
        }
    }
    const std::int32_t result = call.correctWithoutAsync();
    if (call.is(host::imOpenFile8) && result == host::imNoErr) {
        const std::lock_guard lock(mutex);
        opened.insert(opener(call.record<host::imFileOpenRec8>()->privatedata));
    }
    return result;
}
