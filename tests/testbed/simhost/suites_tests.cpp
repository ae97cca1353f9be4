#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

#include "fake_plugin.h"
#include "host/pixel_formats.h"
#include "simhost/host.h"

namespace simhost {
namespace {

using test::acquire;
using test::basicSuiteOf;

TEST(SimulatedSuites, TheWayToTheBasicSuiteIsTheDocumentedOne) {
    Host sim;
    const host::imStdParms parms = sim.stdParms();
    EXPECT_EQ(basicSuiteOf(&parms), sim.basicSuite());
    EXPECT_EQ(sim.calls(Service::kGetSPBasicSuite), 1u);
    EXPECT_EQ(int{parms.imInterfaceVer}, 23);
}

TEST(SimulatedSuites, AllSevenAreServedAtTheirVersionsAndNoOther) {
    Host sim;
    for (const HostSuite& suite : hostSuites()) {
        EXPECT_NE(acquire<void*>(sim.basicSuite(), suite.name, suite.version), nullptr) << suite.name;
        EXPECT_EQ(acquire<void*>(sim.basicSuite(), suite.name, suite.version + 1), nullptr) << suite.name;
    }
    EXPECT_EQ(hostSuites().size(), 7u) << "CONTRIBUTING.md, \"How do I add ...\", a suite of the host";
    EXPECT_EQ(acquire<void*>(sim.basicSuite(), "Premiere Window Suite", 1), nullptr);
}

TEST(SimulatedSuites, ARefusalLeavesTheVariableAloneOrWritesNullAsTheProfileSays) {
    HostProfile profile = defaultProfile();
    profile.refusedSuites = {host::kTimeSuiteName};
    int mark = 0;
    {
        Host sim(profile);
        const void* suite = &mark;
        EXPECT_NE(sim.basicSuite()->AcquireSuite(host::kTimeSuiteName, host::kTimeSuiteVersion, &suite), 0);
        EXPECT_EQ(suite, &mark);
        EXPECT_NE(sim.trace().back().result, 0);
    }
    profile.refusalWritesNull = true;
    Host sim(profile);
    const void* suite = &mark;
    EXPECT_NE(sim.basicSuite()->AcquireSuite(host::kTimeSuiteName, host::kTimeSuiteVersion, &suite), 0);
    EXPECT_EQ(suite, nullptr);
    EXPECT_TRUE(sim.isClean());
}

TEST(SimulatedSuites, HeldSuitesAreReportedUntilReleasedAsOftenAsAcquired) {
    Host sim;
    const host::SPBasicSuite* basic = sim.basicSuite();
    acquire<host::PPixSuite>(basic, host::kPPixSuiteName, host::kPPixSuiteVersion);
    acquire<host::PPixSuite>(basic, host::kPPixSuiteName, host::kPPixSuiteVersion);
    EXPECT_EQ(sim.balance().suites, (std::map<std::string, std::int64_t>{{"Premiere PPix Suite 1", 2}}));
    EXPECT_EQ(sim.report(), "suites.returned: 'Premiere PPix Suite 1' held 2 times\n");
    EXPECT_EQ(basic->ReleaseSuite(host::kPPixSuiteName, host::kPPixSuiteVersion), 0);
    EXPECT_FALSE(sim.balance().isBalanced());
    EXPECT_EQ(basic->ReleaseSuite(host::kPPixSuiteName, host::kPPixSuiteVersion), 0);
    EXPECT_TRUE(sim.balance().isBalanced());
    EXPECT_TRUE(sim.isClean());
}

TEST(SimulatedSuites, ReleasingWhatIsNotHeldIsAViolation) {
    Host sim;
    EXPECT_NE(sim.basicSuite()->ReleaseSuite(host::kPPixSuiteName, host::kPPixSuiteVersion), 0);
    acquire<host::PPixSuite>(sim.basicSuite(), host::kPPixSuiteName, host::kPPixSuiteVersion);
    EXPECT_NE(sim.basicSuite()->ReleaseSuite(host::kPPixSuiteName, 2), 0);
    EXPECT_EQ(texts(sim.violations()),
              (std::vector<std::string>{
                  "suites.released-once: ReleaseSuite: 'Premiere PPix Suite 1' is not held",
                  "suites.released-once: ReleaseSuite: 'Premiere PPix Suite 2' is not held"}));
}

TEST(SimulatedSuites, CallingASuiteThatIsNoLongerHeldIsAViolation) {
    Host sim;
    const auto* time =
        acquire<host::TimeSuite>(sim.basicSuite(), host::kTimeSuiteName, host::kTimeSuiteVersion);
    host::PrTime ticks = 0;
    EXPECT_EQ(time->GetTicksPerSecond(&ticks), 0);
    EXPECT_EQ(ticks, 254016000000);
    EXPECT_TRUE(sim.violations().empty());
    (void)sim.basicSuite()->ReleaseSuite(host::kTimeSuiteName, host::kTimeSuiteVersion);
    (void)time->GetTicksPerSecond(&ticks);
    EXPECT_EQ(
        texts(sim.violations()),
        (std::vector<std::string>{"suites.held: GetTicksPerSecond: 'Premiere Time Suite' is not held"}));
}

TEST(SimulatedSuites, UnusedSlotsAreDistinctAndTellTheirNames) {
    Host sim;
    const auto* cache = acquire<host::PPixCacheSuite>(sim.basicSuite(), host::kPPixCacheSuiteName,
                                                      host::kPPixCacheSuiteVersion);
    const auto* ppix =
        acquire<host::PPixSuite>(sim.basicSuite(), host::kPPixSuiteName, host::kPPixSuiteVersion);
    const auto call = [](void* slot) { return reinterpret_cast<std::intptr_t (*)()>(slot)(); };
    EXPECT_LT(call(cache->AddFrameToCache), 0);
    EXPECT_LT(call(cache->GetFrameFromCacheWithColorProfile2), 0);
    EXPECT_LT(call(ppix->GetBounds), 0);
    EXPECT_LT(call(sim.basicSuite()->IsEqual), 0);
    EXPECT_EQ(
        texts(sim.violations()),
        (std::vector<std::string>{"suites.offered: AddFrameToCache: called",
                                  "suites.offered: GetFrameFromCacheWithColorProfile2: called",
                                  "suites.offered: GetBounds: called", "suites.offered: IsEqual: called"}));
}

TEST(SimulatedSuites, NoSlotOfAnyTableIsNull) {
    Host sim;
    const std::size_t slots[] = {1, 2, 14, 9, 3, 7, 8};
    for (std::size_t i = 0; i < kSuiteCount; ++i) {
        const auto* table = static_cast<void* const*>(hostSuites()[i].table);
        for (std::size_t slot = 0; slot < slots[i]; ++slot) {
            EXPECT_NE(table[slot], nullptr) << hostSuites()[i].name << " slot " << slot;
        }
    }
}

TEST(SimulatedSuites, ErrorEventsAreKeptAsUtf8) {
    Host sim;
    const auto* error =
        acquire<host::ErrorSuite>(sim.basicSuite(), host::kErrorSuiteName, host::kErrorSuiteVersion);
    EXPECT_EQ(error->SetEventStringUnicode(host::kEventTypeError, u"Title \u00E9", u"What"), 0);
    ASSERT_EQ(sim.events().size(), 1u);
    EXPECT_EQ(sim.events()[0].type, 3u);
    EXPECT_EQ(sim.events()[0].title, "Title \xC3\xA9");
    EXPECT_EQ(sim.events()[0].description, "What");
}

TEST(SimulatedSuites, ImageQuestionsAreAnsweredInExactlyFourBytes) {
    Host sim;
    const auto* suite = acquire<host::ImageProcessingSuite>(sim.basicSuite(), host::kImageProcessingSuiteName,
                                                            host::kImageProcessingSuiteVersion);
    std::int32_t answer[2] = {-1, -1};
    EXPECT_EQ(suite->FormatIsOriginTopLeft(host::PrPixelFormat_V210_422_10u_601, answer), 0);
    EXPECT_EQ(answer[0], 1);
    EXPECT_EQ(answer[1], -1);
    EXPECT_EQ(suite->FormatIsOriginTopLeft(host::PrPixelFormat_BGRA_4444_8u, answer), 0);
    EXPECT_EQ(answer[0], 0);
    EXPECT_EQ(suite->FormatHasAlpha(host::PrPixelFormat_BGRA_4444_8u, answer), 0);
    EXPECT_EQ(answer[0], 1);
    EXPECT_EQ(suite->FormatIsCompressed(host::PrPixelFormat_NTSCDV25, answer), 0);
    EXPECT_EQ(answer[0], 1);
    answer[0] = 5;
    EXPECT_NE(suite->FormatHasAlpha(0x12345678, answer), 0);
    EXPECT_EQ(answer[0], 5);
}

TEST(SimulatedSuites, TheTraceKeepsOrderDetailAndThread) {
    Host sim;
    acquire<void*>(sim.basicSuite(), host::kTimeSuiteName, host::kTimeSuiteVersion);
    std::thread([&sim] {
        (void)sim.basicSuite()->ReleaseSuite(host::kTimeSuiteName, host::kTimeSuiteVersion);
    }).join();
    const auto trace = sim.trace();
    ASSERT_EQ(trace.size(), 2u);
    EXPECT_EQ(trace[0].service, Service::kAcquireSuite);
    EXPECT_EQ(trace[0].detail, "Premiere Time Suite");
    EXPECT_EQ(trace[0].thread, std::this_thread::get_id());
    EXPECT_EQ(trace[1].service, Service::kReleaseSuite);
    EXPECT_NE(trace[1].thread, std::this_thread::get_id());
    EXPECT_EQ(sim.totalCalls(), 2u);
}

TEST(SimulatedSuites, ASecondHostIsRefusedAndANewOneMayFollow) {
    {
        Host sim;
        EXPECT_THROW(Host(), std::logic_error);
        EXPECT_EQ(Host::current(), &sim);
    }
    EXPECT_EQ(Host::current(), nullptr);
    const Host next;
    EXPECT_EQ(Host::current(), &next);
}

TEST(SuitesDeathTest, AServiceCalledAfterTheHostIsGoneEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            const host::SPBasicSuite* basic = Host().basicSuite();
            (void)basic->ReleaseSuite(host::kTimeSuiteName, 1);
        },
        "ReleaseSuite was called while no host exists");
}

}  // namespace
}  // namespace simhost
