// Breaks nothing: plays sound and shows no pictures.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    if (call.is(host::imGetSourceVideo) || call.is(host::imGetIndPixelFormat)) {
        return host::imUnsupported;
    }
    const std::int32_t result = call.correctWithoutAsync();
    if (auto* const info = call.record<host::imFileInfoRec8>();
        call.is(host::imGetInfo8) && result == host::imNoErr) {
        info->hasVideo = 0;
        info->vidInfo.supportsGetSourceVideo = 0;
        info->hasDataRate = 0;
    }
    return result;
}
