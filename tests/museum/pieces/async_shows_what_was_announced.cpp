// Shows the first frame in the place of one that was not announced.
#include <mutex>
#include <set>

#include "tests/museum/async_piece.h"

namespace {

std::mutex g_mutex;
std::set<host::PrTime> g_announced;

std::int32_t asyncAnswer(std::int32_t selector, void* param) {
    const std::lock_guard lock(g_mutex);
    if (selector == host::aiInitiateAsyncRead && param != nullptr) {
        g_announced.insert(static_cast<host::aiAsyncRequest*>(param)->inSourceRec.inFrameTime);
    }
    if (selector != host::aiGetFrame || param == nullptr) {
        return sample::asyncEntry(selector, param);
    }
    host::imSourceVideoRec request = *static_cast<host::imSourceVideoRec*>(param);
    if (!g_announced.contains(request.inFrameTime)) {
        request.inFrameTime = request.inFrameTime > 0 ? 0 : request.inFrameTime;
    }
    return sample::asyncEntry(selector, &request);
}

}  // namespace

std::int32_t piece::answer(const Call& call) {
    return correctThrough(call, asyncAnswer);
}
