// Gives a suite back that it does not hold.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    if (call.is(host::imShutdown) && call.parms != nullptr) {
        (void)call.basic()->ReleaseSuite(host::kTimeSuiteName, host::kTimeSuiteVersion);
    }
    return call.correct();
}
