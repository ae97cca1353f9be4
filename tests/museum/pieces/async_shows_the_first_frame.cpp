// Shows the first frame whatever is fetched asynchronously.
#include "tests/museum/piece.h"

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
    const std::int32_t result = call.correct();
    if (call.is(host::imCreateAsyncImporter) && result == host::imNoErr) {
        static_cast<host::imAsyncImporterCreationRec*>(call.param1)->outAsyncEntry = asyncAnswer;
    }
    return result;
}
