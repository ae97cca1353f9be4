// Forgets a suite that it holds when it misses another one.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const std::int32_t result = call.correct();
    const void* table = nullptr;
    if (call.is(host::imOpenFile8) && result == host::imOtherErr && call.parms != nullptr) {
        (void)call.basic()->AcquireSuite(host::kErrorSuiteName, host::kErrorSuiteVersion, &table);
    }
    return result;
}
