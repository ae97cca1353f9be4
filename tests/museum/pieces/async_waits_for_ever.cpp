// Waits for ever for what it does not know.
#include <future>

#include "tests/museum/piece.h"

namespace {

constexpr std::int32_t kLastSelector = 6;  // aiSelectEfficientRenderTime

std::int32_t asyncAnswer(std::int32_t selector, void* param) {
    if (selector < host::aiInitiateAsyncRead || selector > kLastSelector) {
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
