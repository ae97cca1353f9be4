// Shows frames by its asynchronous importer on the thread alone that has made it.
#include <atomic>
#include <thread>

#include "tests/museum/piece.h"

namespace {

std::atomic<std::thread::id> g_maker;

std::int32_t asyncAnswer(std::int32_t selector, void* param) {
    return selector == host::aiGetFrame && std::this_thread::get_id() != g_maker
               ? host::aiFrameNotFound
               : sample::asyncEntry(selector, param);
}

}  // namespace

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    if (call.is(host::imCreateAsyncImporter) && result == host::imNoErr) {
        g_maker = std::this_thread::get_id();
        static_cast<host::imAsyncImporterCreationRec*>(call.param1)->outAsyncEntry = asyncAnswer;
    }
    return result;
}
