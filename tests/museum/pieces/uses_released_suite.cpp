// Goes on with a suite that it has given back.
#include "tests/museum/piece.h"

namespace {

const host::TimeSuite* g_time = nullptr;

}  // namespace

std::int32_t piece::answer(const Call& call) {
    if (call.is(host::imInit) && call.parms != nullptr) {
        sample::HeldSuite<host::TimeSuite> held(call.basic(), host::kTimeSuiteName, host::kTimeSuiteVersion);
        g_time = held ? held.operator->() : nullptr;
    }
    host::PrTime ticks = 0;
    if (call.is(host::imGetSupports8) && g_time != nullptr) {
        (void)g_time->GetTicksPerSecond(&ticks);
    }
    return call.correct();
}
