// Tells data rates of frames that last no time.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    auto* const record = call.record<host::imDataRateAnalysisRec>();
    if (call.is(host::imDataRateAnalysis) && result == host::imNoErr && record->buffer != nullptr &&
        record->buffersize > 0) {
        record->buffer[0].sampledur = 0;
    }
    return result;
}
