// Breaks nothing: shows pictures, and answers none of the questions that an importer may leave open.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    for (const std::int32_t left : {host::imImportAudio7, host::imGetAudioChannelLayout,
                                    host::imGetSubTypeNames, host::imAnalysis, host::imDataRateAnalysis}) {
        if (call.is(left)) {
            return host::imUnsupported;
        }
    }
    const std::int32_t result = call.correctWithoutAsync();
    if (auto* const info = call.record<host::imFileInfoRec8>();
        call.is(host::imGetInfo8) && result == host::imNoErr) {
        info->hasAudio = 0;
        info->audInfo = {};
        info->audDuration = 0;
        info->hasDataRate = 0;
    }
    return result;
}
