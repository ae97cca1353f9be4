// Does not show a frame any more whose request was cancelled.
#include <mutex>
#include <set>

#include "tests/museum/async_piece.h"

namespace {

std::mutex g_mutex;
std::set<host::PrTime> g_cancelled;

std::int32_t asyncAnswer(std::int32_t selector, void* param) {
    const std::lock_guard lock(g_mutex);
    if (selector == host::aiCancelAsyncRead) {
        g_cancelled.insert(static_cast<host::aiAsyncRequest*>(param)->inSourceRec.inFrameTime);
    } else if (selector == host::aiFlush) {
        g_cancelled.clear();
    } else if (selector == host::aiGetFrame &&
               g_cancelled.contains(static_cast<host::imSourceVideoRec*>(param)->inFrameTime)) {
        return host::aiFrameNotFound;
    }
    return sample::asyncEntry(selector, param);
}

}  // namespace

std::int32_t piece::answer(const Call& call) {
    return correctThrough(call, asyncAnswer);
}
