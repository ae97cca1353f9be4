// Crashes at an imAnalysis without a buffer.
#include <cstdlib>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    if (call.is(host::imAnalysis) && call.record<host::imAnalysisRec>()->buffer == nullptr) {
        std::abort();
    }
    return call.correct();
}
