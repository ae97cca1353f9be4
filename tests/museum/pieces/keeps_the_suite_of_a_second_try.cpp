// Keeps a suite that it was given when it asked again.
#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const void* suite = nullptr;
    if (call.is(host::imInit)) {
        const host::SPBasicSuite* const basic = call.basic();
        const auto acquire = [&] {
            return basic->AcquireSuite(host::kTimeSuiteName, host::kTimeSuiteVersion, &suite);
        };
        if (acquire() != 0) {
            (void)acquire();
        } else {
            (void)basic->ReleaseSuite(host::kTimeSuiteName, host::kTimeSuiteVersion);
        }
    }
    return call.correct();
}
