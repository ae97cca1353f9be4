// Takes a suite for each start and never gives it back.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const void* table = nullptr;
    if (call.is(host::imInit) && call.parms != nullptr) {
        (void)call.basic()->AcquireSuite(host::kErrorSuiteName, host::kErrorSuiteVersion, &table);
    }
    return call.correct();
}
