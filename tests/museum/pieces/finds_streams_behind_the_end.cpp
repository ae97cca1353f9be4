// Describes streams that are not there.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    auto* const record = call.record<host::imFileInfoRec8>();
    if (!call.is(host::imGetInfo8) || record == nullptr || record->streamIdx == 1) {
        return call.correct();
    }
    const std::int32_t stream = record->streamIdx;
    record->streamIdx = 0;
    const std::int32_t result = call.correct();
    record->streamIdx = stream;
    return stream == 0 && result == host::imNoErr ? host::imIterateStreams : result;
}
