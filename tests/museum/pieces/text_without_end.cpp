// Cuts the text of the Properties window and its end with it.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    auto* const record = call.record<host::imAnalysisRec>();
    if (call.is(host::imAnalysis) && result == host::imNoErr && record->buffer != nullptr &&
        record->buffersize == 10) {
        record->buffer[9] = 'x';
    }
    return result;
}
