// Labels a channel with a number that no host knows.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    if (call.is(host::imGetAudioChannelLayout) && result == host::imNoErr) {
        call.record<host::imGetAudioChannelLayoutRec>()->outChannelLabels[1] = 999;
    }
    return result;
}
