// Begins every piece of sound with silence.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    const auto* const record = call.record<host::imImportAudioRec7>();
    if (call.is(host::imImportAudio7) && result == host::imNoErr && record->size > 0) {
        record->buffer[0][0] = 0.25F;
    }
    return result;
}
