// Shows nothing any more once a request has named no format.
#include <mutex>
#include <set>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static std::mutex mutex;
    static std::set<const void*> offended;
    const std::lock_guard lock(mutex);
    if (call.is(host::imCloseFile)) {
        offended.erase(call.param2);
    }
    const auto* const request = call.record<host::imSourceVideoRec>();
    if (call.is(host::imGetSourceVideo) && request != nullptr) {
        if (request->inNumFrameFormats == 0) {
            offended.insert(request->inPrivateData);
        } else if (offended.contains(request->inPrivateData)) {
            return host::imOtherErr;
        }
    }
    return call.correctWithoutAsync();
}
