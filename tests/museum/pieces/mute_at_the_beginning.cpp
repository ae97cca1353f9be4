// Has no sound at the beginning of a clip.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    return call.is(host::imImportAudio7) && call.record<host::imImportAudioRec7>()->position == 0
               ? host::imOtherErr
               : call.correct();
}
