// Gives a sample that is no number.
#include <limits>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const auto* const record = call.record<host::imImportAudioRec7>();
    const auto clip =
        call.is(host::imImportAudio7) && record != nullptr ? sample::findClip(record->privateData) : nullptr;
    const std::int32_t result = call.correct();
    if (clip != nullptr && result == host::imNoErr && record->position >= 0 && record->position <= 5 &&
        record->position + record->size > 5) {
        record->buffer[0][5 - record->position] = std::numeric_limits<float>::infinity();
    }
    return result;
}
