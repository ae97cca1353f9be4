// Asks for the row bytes of a frame that it has delivered before.
#include <mutex>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static std::mutex mutex;
    static host::PPixHand before = nullptr;
    const std::lock_guard lock(mutex);
    const host::imFrameFormat* const wanted = call.wanted();
    if (wanted == nullptr) {
        before = call.is(host::imGetSourceVideo) ? nullptr : before;
        return call.correct();
    }
    const bool named = wanted->inFrameWidth != 0;
    std::int32_t rowBytes = 0;
    if (named && before != nullptr && call.clip() != nullptr) {
        (void)call.clip()->ppix->GetRowBytes(before, &rowBytes);
    }
    const std::int32_t result = call.correct();
    before = named && result == host::imNoErr ? call.frame() : nullptr;
    return result;
}
