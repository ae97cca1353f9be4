// Refuses a file that this thread has open already.
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static std::mutex mutex;
    static std::map<const void*, std::pair<std::thread::id, std::u16string>> opened;
    const std::lock_guard lock(mutex);
    auto* const record = call.record<host::imFileOpenRec8>();
    const std::pair mine(std::this_thread::get_id(), call.path());
    if (call.is(host::imOpenFile8) && record->privatedata == nullptr) {
        for (const auto& entry : opened) {
            if (entry.second == mine) {
                return host::imBadFile;
            }
        }
    }
    if (call.is(host::imCloseFile)) {
        opened.erase(call.param2);
    }
    const std::int32_t result = call.correct();
    if (call.is(host::imOpenFile8) && result == host::imNoErr) {
        opened.emplace(record->privatedata, mine);
    }
    return result;
}
