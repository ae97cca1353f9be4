// Opens no more than three files on any thread but the first.
#include <map>
#include <mutex>
#include <thread>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static std::mutex mutex;
    static const std::thread::id first = std::this_thread::get_id();
    static std::map<std::thread::id, int> opened;
    const std::thread::id self = std::this_thread::get_id();
    if (call.is(host::imOpenFile8) && self != first) {
        const std::lock_guard lock(mutex);
        if (++opened[self] > 3) {
            return host::imBadFile;
        }
    }
    return call.correct();
}
