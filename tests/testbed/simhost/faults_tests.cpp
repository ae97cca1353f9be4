#include <gtest/gtest.h>

#include "fake_plugin.h"
#include "host/pixel_formats.h"
#include "simhost/clip.h"
#include "simhost/host.h"
#include "simhost/session.h"

namespace simhost {
namespace {

using test::acquire;

TEST(Faults, TheNthCallOfAServiceFailsOnce) {
    Host sim;
    const auto* time = acquire<host::TimeSuite>(sim.basicSuite(), host::kTimeSuiteName, 1);
    sim.addFault({.service = Service::kGetTicksPerSecond, .detail = {}, .nth = 2, .result = -7});
    host::PrTime ticks = 5;
    EXPECT_EQ(time->GetTicksPerSecond(&ticks), 0);
    ticks = 5;
    EXPECT_EQ(time->GetTicksPerSecond(&ticks), -7);
    EXPECT_EQ(ticks, 5);
    EXPECT_EQ(time->GetTicksPerSecond(&ticks), 0);
    EXPECT_EQ(sim.injectedFaults(), 1u);
    EXPECT_EQ(sim.calls(Service::kGetTicksPerSecond), 3u);
    EXPECT_EQ(sim.trace()[2].result, -7);
}

TEST(Faults, FromThenOnEveryCallFailsUntilCleared) {
    Host sim;
    const auto* time = acquire<host::TimeSuite>(sim.basicSuite(), host::kTimeSuiteName, 1);
    sim.addFault({.service = Service::kGetTicksPerSecond, .detail = {}, .nth = 2, .fromThenOn = true});
    host::PrTime ticks = 0;
    EXPECT_EQ(time->GetTicksPerSecond(&ticks), 0);
    EXPECT_NE(time->GetTicksPerSecond(&ticks), 0);
    EXPECT_NE(time->GetTicksPerSecond(&ticks), 0);
    sim.clearFaults();
    EXPECT_EQ(time->GetTicksPerSecond(&ticks), 0);
}

TEST(Faults, OneSuiteCanBeRefusedByName) {
    Host sim;
    sim.addFault({.service = Service::kAcquireSuite, .detail = host::kPPixSuiteName});
    EXPECT_NE(acquire<void*>(sim.basicSuite(), host::kTimeSuiteName, 1), nullptr);
    EXPECT_EQ(acquire<void*>(sim.basicSuite(), host::kPPixSuiteName, 1), nullptr);
    EXPECT_NE(acquire<void*>(sim.basicSuite(), host::kPPixSuiteName, 1), nullptr);
}

TEST(Faults, AnyServiceCanBeTheNth) {
    Host sim;
    sim.addFault({.service = {}, .detail = {}, .nth = 2});
    EXPECT_NE(acquire<void*>(sim.basicSuite(), host::kTimeSuiteName, 1), nullptr);
    const host::piSuites* tables = sim.stdParms().piSuites;
    const host::MemoryFunctions* memory = tables->memFuncs;
    EXPECT_EQ(memory->newPtr(10), nullptr);
    void* block = memory->newPtr(10);
    EXPECT_NE(block, nullptr);
    memory->disposePtr(block);
}

TEST(Faults, AReleaseThatFailsHasReleased) {
    Host sim;
    acquire<void*>(sim.basicSuite(), host::kTimeSuiteName, 1);
    sim.addFault({.service = Service::kReleaseSuite, .detail = {}, .nth = 1, .result = -3});
    EXPECT_EQ(sim.basicSuite()->ReleaseSuite(host::kTimeSuiteName, 1), -3);
    EXPECT_TRUE(sim.isClean());
}

TEST(Faults, ADisposalThatFailsHasDisposed) {
    Host sim;
    const auto* creator = acquire<host::PPixCreatorSuite>(sim.basicSuite(), host::kPPixCreatorSuiteName, 1);
    const auto* ppix = acquire<host::PPixSuite>(sim.basicSuite(), host::kPPixSuiteName, 1);
    host::PPixHand frame = nullptr;
    const host::prRect bounds{0, 0, 2, 2};
    ASSERT_EQ(creator->CreatePPix(&frame, 1, host::PrPixelFormat_BGRA_4444_8u, &bounds), 0);
    sim.addFault({.service = Service::kDisposePPix, .detail = {}, .nth = 1, .result = -3});
    EXPECT_EQ(ppix->Dispose(frame), -3);
    EXPECT_EQ(sim.balance().frames, 0u);
}

TEST(Faults, TheHookSeesEveryCallBeforeItIsCounted) {
    Host sim;
    std::uint64_t countedBefore = 99;
    sim.setHook([&](Service service) {
        EXPECT_EQ(service, Service::kAcquireSuite);
        countedBefore = sim.calls(service);
    });
    acquire<void*>(sim.basicSuite(), host::kTimeSuiteName, 1);
    EXPECT_EQ(countedBefore, 0u);
    EXPECT_EQ(sim.totalCalls(), 1u);
}

// Every call of a whole session is made to fail in turn; a well-behaved importer gives everything back each
// time.
TEST(Faults, ASessionSurvivesTheFailureOfEachOfItsCalls) {
    std::uint64_t calls = 1;
    for (std::uint64_t nth = 1; nth <= calls; ++nth) {
        test::FakePlugin fake;
        test::makeWellBehaved(fake);
        Host sim;
        sim.addFault({.service = {}, .detail = {}, .nth = nth});
        const Importer importer(sim, fake.plugin);
        SessionOptions options;
        options.pathUtf8 = "clip.avi";
        // The path to the basic suite cannot fail for this importer, which would follow a null pointer.
        if (nth != 1) {
            (void)runSession(importer, options);
            EXPECT_EQ(sim.report(), "") << "call " << nth;
            EXPECT_EQ(sim.injectedFaults(), nth <= sim.totalCalls() ? 1u : 0u);
            calls = std::max(calls, sim.totalCalls());
        } else {
            sim.clearFaults();
            (void)runSession(importer, options);
            calls = sim.totalCalls();
        }
    }
    EXPECT_GT(calls, 20u);
}

}  // namespace
}  // namespace simhost
