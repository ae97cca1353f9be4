// Begins anew where a request says to go on.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const auto* const record = call.record<host::imImportAudioRec7>();
    const auto clip =
        call.is(host::imImportAudio7) && record != nullptr ? sample::findClip(record->privateData) : nullptr;
    if (clip == nullptr || record->position >= 0) {
        return call.correct();
    }
    host::imImportAudioRec7 first = *record;
    first.position = 0;
    return Call{call.selector, call.parms, call.param1, &first}.correct();
}
