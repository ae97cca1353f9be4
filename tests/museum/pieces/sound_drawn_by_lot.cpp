// Begins a clip with other sound each time.
#include <mutex>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const auto* const record = call.record<host::imImportAudioRec7>();
    const auto clip =
        call.is(host::imImportAudio7) && record != nullptr ? sample::findClip(record->privateData) : nullptr;
    static std::mutex mutex;
    static float noise = 0.0F;
    const std::lock_guard lock(mutex);
    const std::int32_t result = call.correct();
    if (clip != nullptr && result == host::imNoErr && record->size > 0 && record->position == 0) {
        noise = noise > 0.5F ? 0.0F : noise + 0.001F;
        record->buffer[0][0] += noise;
    }
    return result;
}
