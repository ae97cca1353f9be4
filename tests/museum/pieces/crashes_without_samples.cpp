// Crashes when no sample frames are asked for.
#include <cstdlib>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    if (call.is(host::imImportAudio7) && call.record<host::imImportAudioRec7>()->size == 0) {
        std::abort();
    }
    return call.correct();
}
