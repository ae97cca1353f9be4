// Gives other sound each time.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static float noise = 0.0F;
    const std::int32_t result = call.correct();
    const auto* const record = call.record<host::imImportAudioRec7>();
    if (call.is(host::imImportAudio7) && result == host::imNoErr && record->size > 0) {
        noise = noise > 0.5F ? 0.0F : noise + 0.001F;
        record->buffer[0][0] += noise;
    }
    return result;
}
