// Shows nothing any more behind the second aiFlush.
#include <map>
#include <mutex>

#include "tests/museum/async_piece.h"

namespace {

std::mutex g_mutex;
std::map<const void*, int> g_flushes;

std::int32_t asyncAnswer(std::int32_t selector, void* param) {
    {
        const std::lock_guard lock(g_mutex);
        if (selector == host::aiFlush) {
            ++g_flushes[param];
        } else if (selector == host::aiClose) {
            g_flushes.erase(param);
        } else if (selector == host::aiGetFrame &&
                   g_flushes[static_cast<host::imSourceVideoRec*>(param)->inPrivateData] > 1) {
            return host::aiFrameNotFound;
        }
    }
    return sample::asyncEntry(selector, param);
}

}  // namespace

std::int32_t piece::answer(const Call& call) {
    return correctThrough(call, asyncAnswer);
}
