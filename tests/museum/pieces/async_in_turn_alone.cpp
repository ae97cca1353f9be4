// Gives the frames that a thread has announced in their order alone.
#include <deque>
#include <map>
#include <mutex>
#include <thread>

#include "tests/museum/async_piece.h"

namespace {

std::mutex g_mutex;
std::map<std::thread::id, std::deque<host::PrTime>> g_announced;

std::int32_t asyncAnswer(std::int32_t selector, void* param) {
    const std::lock_guard lock(g_mutex);
    auto& mine = g_announced[std::this_thread::get_id()];
    if (selector == host::aiInitiateAsyncRead) {
        mine.push_back(static_cast<host::aiAsyncRequest*>(param)->inSourceRec.inFrameTime);
    } else if (selector == host::aiGetFrame) {
        const host::PrTime wanted = static_cast<host::imSourceVideoRec*>(param)->inFrameTime;
        const bool inTurn = mine.empty() || mine.front() == wanted;
        std::erase(mine, wanted);
        if (!inTurn) {
            return host::aiFrameNotFound;
        }
    } else {
        mine.clear();
    }
    return sample::asyncEntry(selector, param);
}

}  // namespace

std::int32_t piece::answer(const Call& call) {
    return correctThrough(call, asyncAnswer);
}
