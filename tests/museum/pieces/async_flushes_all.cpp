// Flushes all asynchronous importers when one is flushed.
#include <map>
#include <mutex>

#include "tests/museum/async_piece.h"

namespace {

std::mutex g_mutex;
std::map<const void*, bool> g_flushed;  // by another importer

std::int32_t asyncAnswer(std::int32_t selector, void* param) {
    const std::lock_guard lock(g_mutex);
    if (selector == host::aiInitiateAsyncRead) {
        g_flushed[static_cast<host::aiAsyncRequest*>(param)->inPrivateData] = false;
    } else if (selector == host::aiFlush) {
        for (auto& [importer, flushed] : g_flushed) {
            flushed = flushed || importer != param;
        }
    } else if (selector == host::aiClose) {
        g_flushed.erase(param);
    } else if (selector == host::aiGetFrame &&
               g_flushed[static_cast<host::imSourceVideoRec*>(param)->inPrivateData]) {
        return host::aiFrameNotFound;
    }
    return sample::asyncEntry(selector, param);
}

}  // namespace

std::int32_t piece::answer(const Call& call) {
    return correctThrough(call, asyncAnswer);
}
