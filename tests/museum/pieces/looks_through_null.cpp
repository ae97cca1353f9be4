// Believes in a suite that was refused when the variable is null.
#include <cstdlib>

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static const int other = 0;
    const void* suite = &other;
    if (call.is(host::imInit)) {
        const host::SPBasicSuite* const basic = call.basic();
        const std::int32_t result =
            basic->AcquireSuite(host::kTimeSuiteName, host::kTimeSuiteVersion, &suite);
        if (suite == nullptr) {
            std::abort();
        }
        if (result == 0) {
            (void)basic->ReleaseSuite(host::kTimeSuiteName, host::kTimeSuiteVersion);
        }
    }
    return call.correct();
}
