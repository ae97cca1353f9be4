// Waits for work that was never begun when it is cancelled.
#include <future>

#include "tests/museum/piece.h"

namespace {

std::int32_t asyncAnswer(std::int32_t selector, void* param) {
    if (selector == host::aiCancelAsyncRead) {
        std::promise<void> never;
        never.get_future().wait();
    }
    return sample::asyncEntry(selector, param);
}

}  // namespace

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    if (call.is(host::imCreateAsyncImporter) && result == host::imNoErr) {
        static_cast<host::imAsyncImporterCreationRec*>(call.param1)->outAsyncEntry = asyncAnswer;
    }
    return result;
}
