// Forgets the last sample of a clip.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const auto* const record = call.record<host::imImportAudioRec7>();
    const auto clip =
        call.is(host::imImportAudio7) && record != nullptr ? sample::findClip(record->privateData) : nullptr;
    const bool last = clip != nullptr && record->size > 0 && record->buffer != nullptr &&
                      record->position + record->size == clip->header.sampleFrames;
    const float before = last ? record->buffer[0][record->size - 1] : 0.0F;
    const std::int32_t result = call.correct();
    if (last) {
        record->buffer[0][record->size - 1] = before;
    }
    return result;
}
