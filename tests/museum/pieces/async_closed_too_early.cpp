// Cannot be closed while a thread is still in aiGetFrame.
#include <atomic>
#include <cstdlib>

#include "tests/museum/async_piece.h"

namespace {

std::atomic<int> g_inside{0};

std::int32_t asyncAnswer(std::int32_t selector, void* param) {
    if (selector == host::aiClose && g_inside > 0) {
        std::abort();
    }
    g_inside += selector == host::aiGetFrame ? 1 : 0;
    const std::int32_t result = sample::asyncEntry(selector, param);
    g_inside -= selector == host::aiGetFrame ? 1 : 0;
    return result;
}

}  // namespace

std::int32_t piece::answer(const Call& call) {
    return correctThrough(call, asyncAnswer);
}
