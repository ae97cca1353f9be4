// Shows a clip to two threads and no more.
#include <map>
#include <mutex>
#include <set>
#include <thread>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static std::mutex mutex;
    static std::map<const void*, std::set<std::thread::id>> shown;
    const auto* const request = call.record<host::imSourceVideoRec>();
    if (call.is(host::imGetSourceVideo) && request != nullptr) {
        const std::lock_guard lock(mutex);
        auto& threads = shown[request->inPrivateData];
        threads.insert(std::this_thread::get_id());
        if (threads.size() > 2) {
            return host::imOtherErr;
        }
    }
    if (call.is(host::imCloseFile)) {
        const std::lock_guard lock(mutex);
        shown.erase(call.param2);
    }
    return call.correctWithoutAsync();
}
