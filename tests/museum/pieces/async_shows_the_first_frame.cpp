// Shows the first frame whatever is fetched asynchronously.
#include "tests/museum/async_piece.h"

namespace {

std::int32_t asyncAnswer(std::int32_t selector, void* param) {
    if (selector != host::aiGetFrame || param == nullptr) {
        return sample::asyncEntry(selector, param);
    }
    host::imSourceVideoRec request = *static_cast<host::imSourceVideoRec*>(param);
    request.inFrameTime = request.inFrameTime > 0 ? 0 : request.inFrameTime;
    return sample::asyncEntry(selector, &request);
}

}  // namespace

std::int32_t piece::answer(const Call& call) {
    return correctThrough(call, asyncAnswer);
}
