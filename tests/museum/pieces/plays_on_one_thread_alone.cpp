// Shows nothing on a second thread, even of files that this one has opened.
#include <map>
#include <mutex>
#include <thread>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static std::mutex mutex;
    static const std::thread::id first = std::this_thread::get_id();
    static std::map<const void*, std::thread::id> openers;
    const std::lock_guard lock(mutex);
    const std::thread::id self = std::this_thread::get_id();
    const auto* const request = call.record<host::imSourceVideoRec>();
    if (call.is(host::imGetSourceVideo) && request != nullptr && self != first &&
        openers[request->inPrivateData] == self) {
        return host::imOtherErr;
    }
    const std::int32_t result = call.correctWithoutAsync();
    if (call.is(host::imOpenFile8) && result == host::imNoErr) {
        openers[call.record<host::imFileOpenRec8>()->privatedata] = self;
    }
    return result;
}
