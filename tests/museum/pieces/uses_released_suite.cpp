// Goes on with a suite that it has given back.
#include <atomic>

#include "tests/museum/piece.h"

namespace {

std::atomic<const host::TimeSuite*> g_time{nullptr};

}  // namespace

std::int32_t piece::answer(const Call& call) {
    if (call.is(host::imInit) && call.parms != nullptr) {
        sample::HeldSuite<host::TimeSuite> held(call.basic(), host::kTimeSuiteName, host::kTimeSuiteVersion);
        g_time = held ? held.operator->() : nullptr;
    }
    host::PrTime ticks = 0;
    if (const auto* const time = g_time.load(); call.is(host::imGetSupports8) && time != nullptr) {
        (void)time->GetTicksPerSecond(&ticks);
    }
    return call.correct();
}
