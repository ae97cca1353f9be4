// Waits for ever for what it does not know.
#include <future>

#include "tests/museum/async_piece.h"

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
    return correctThrough(call, asyncAnswer);
}
