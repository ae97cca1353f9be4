// Shows nothing on the thread that has made it once another one has asked.
#include <atomic>
#include <thread>

#include "tests/museum/piece.h"

namespace {

std::atomic<std::thread::id> g_maker;
std::atomic<bool> g_otherAsked{false};

std::int32_t asyncAnswer(std::int32_t selector, void* param) {
    if (selector == host::aiGetFrame) {
        const bool mine = std::this_thread::get_id() == g_maker;
        g_otherAsked = g_otherAsked || !mine;
        if (mine && g_otherAsked) {
            return host::aiFrameNotFound;
        }
    }
    return sample::asyncEntry(selector, param);
}

}  // namespace

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    if (call.is(host::imCreateAsyncImporter) && result == host::imNoErr) {
        g_maker = std::this_thread::get_id();
        g_otherAsked = false;
        static_cast<host::imAsyncImporterCreationRec*>(call.param1)->outAsyncEntry = asyncAnswer;
    }
    return result;
}
