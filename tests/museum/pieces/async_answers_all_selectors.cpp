// Says yes to what its asynchronous entry does not know.
#include "tests/museum/async_piece.h"

namespace {

std::int32_t asyncAnswer(std::int32_t selector, void* param) {
    const std::int32_t result = sample::asyncEntry(selector, param);
    return result == host::aiUnsupported ? host::aiNoError : result;
}

}  // namespace

std::int32_t piece::answer(const Call& call) {
    return correctThrough(call, asyncAnswer);
}
