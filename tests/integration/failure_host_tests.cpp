// Services of the host that fail: each has its result, its log line, and no consequence for the next request.
// At the end every single call that a session makes is let fail, one after the other.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "host/four_char_codes.h"
#include "host/pixel_formats.h"
#include "host/result_codes.h"
#include "host/selectors.h"
#include "simhost/session.h"
#include "tests/integration/plugin_clip_test.h"
#include "tests/support/thorough.h"

namespace {

using simhost::Service;
using testing::Contains;

using clips::kYuy2;

class HostFailures : public ClipTest {
 protected:
    void describe() {
        logOn();
        startAndInit();
        describeClip();
        static_cast<void>(log().news());
    }

    void expectGoodFrame(std::uint32_t index) {
        const auto answer = clip().getFrame(index, kYuy2);
        EXPECT_EQ(answer.result, host::imNoErr);
        ASSERT_TRUE(answer.frame.has_value());
        EXPECT_EQ(answer.frame->picture(), clips::yuy2Picture(index));
    }
};

TEST_F(HostFailures, AFrameThatCannotBeMadeIsAnOtherError) {
    describe();
    for (const std::int32_t result : {host::kSuiteOutOfMemory, host::kSuiteFailed, 1, 1234567}) {
        host().addFault(failOnce(Service::kCreatePPix, 1, result));
        static_cast<void>(log().news());
        EXPECT_EQ(clip().getFrame(1, kYuy2).result, host::imOtherErr);
        EXPECT_TRUE(log().news().ends_with("\nERROR: CreatePPix() failed: " + std::to_string(result) +
                                           "\n    [imOtherErr] (5)\n"));
        expectGoodFrame(1);
    }
    EXPECT_EQ(host().calls(Service::kDisposePPix), 0U) << "there was nothing to dispose of";
}

TEST_F(HostFailures, TheDecompressionIsBegunOnlyOnceAlthoughTheFirstFrameFails) {
    describe();
    host().addFault(failOnce(Service::kCreatePPix));
    EXPECT_EQ(clip().getFrame(0, kYuy2).result, host::imOtherErr);
    expectGoodFrame(0);
    EXPECT_THAT(log().newLines(), Contains(testing::StartsWith("Starting decompression: ")).Times(1));
}

TEST_F(HostFailures, AFrameWhosePixelsCannotBeReachedIsDisposedOf) {
    describe();
    struct Case {
        Service service;
        const char* line;
    };
    std::uint64_t disposed = 0;
    for (const Case& failing : {Case{Service::kGetPixels, "ERROR: GetPixels() failed: -2147483647"},
                                Case{Service::kGetRowBytes, "ERROR: GetRowBytes() failed: -2147483647"}}) {
        host().addFault(failOnce(failing.service, 1, host::kSuiteBadParameters));
        EXPECT_EQ(clip().getFrame(2, kYuy2).result, host::imOtherErr);
        EXPECT_THAT(log().newLines(), Contains(failing.line));
        EXPECT_EQ(host().calls(Service::kDisposePPix), ++disposed);
        EXPECT_EQ(host().balance().frames, 0U);
        expectGoodFrame(2);
    }
}

TEST_F(HostFailures, ADisposalThatFailsIsNotTriedAgain) {
    describe();
    host().addFault(failOnce(Service::kGetPixels));
    host().addFault(failOnce(Service::kDisposePPix));
    EXPECT_EQ(clip().getFrame(2, kYuy2).result, host::imOtherErr);
    EXPECT_EQ(host().calls(Service::kDisposePPix), 1U);
    expectGoodFrame(2);
}

TEST_F(HostFailures, WithoutATimeBaseNoTimeFallsOnAFrame) {
    describe();
    host().addFault(failOnce(Service::kGetTicksPerSecond));
    EXPECT_EQ(clip().getInfo(0).result, host::imNoErr);
    EXPECT_THAT(log().newLines(), testing::Not(Contains(testing::HasSubstr("GetTicksPerSecond"))));
    EXPECT_EQ(clip().getFrame(0, kYuy2).result, host::imFrameNotFound);
    EXPECT_THAT(log().newLines(), Contains("frameIndex:  4294967295 (total: 5)"));
    EXPECT_EQ(clip().getInfo(0).result, host::imNoErr);
    expectGoodFrame(0);
}

TEST_F(HostFailures, AConverterThatFailsDoesNotFailTheCall) {
    describe();
    host().addFault(failOnce(Service::kConvertFrom16Bit));
    EXPECT_EQ(clip().importAudio(0, 10, 2).result, host::imNoErr);
    EXPECT_EQ(clip().importAudio(-1, 1, 2).channels[0][0], 10.0F / 32768.0F);
}

TEST_F(HostFailures, AHostThatDoesNotKnowAFormatsOriginGetsItBottomRowFirst) {
    logOn();
    start();
    simhost::FaultPlan plan = failOnce(Service::kFormatIsOriginTopLeft, 1, 0x1234);
    plan.detail = "PrPixelFormat_YUYV_422_8u_601";
    plan.fromThenOn = true;
    host().addFault(plan);
    ASSERT_EQ(importer().init().result, host::imNoErr);
    setInitialised(true);
    EXPECT_THAT(
        log().newLines(),
        testing::AllOf(
            Contains("[yuy2] : - - - -  PrPixelFormat_YUYV_422_8u_601 (err: 0 0 1234) - 846820729"),
            Contains("[yuy2] PrPixelFormat_YUYV_422_8u_601       : ( 4) YUYV       : (1) Rec.601  :   :  $"),
            Contains("[yuy3] PrPixelFormat_YUYV_422_8u_709       : ( 4) YUYV       : (2) Rec.709  :   : 1")));
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    ASSERT_EQ(clip.getFrame(0, kYuy2).result, host::imNoErr);
    EXPECT_THAT(log().newLines(), Contains("Starting decompression: YUV422 8-bit [Rec.601] [LIMITED] -> YUYV "
                                           "[Rec.601] (pr: PrPixelFormat_YUYV_422_8u_601 [yuy2]) [flipped]"));
}

TEST_F(HostFailures, TheDumpsQuestionsMayAllFail) {
    logOn();
    start();
    host().addFault(failAlways(Service::kFormatIsCompressed, -1));
    host().addFault(failAlways(Service::kFormatHasAlpha, 0x22));
    ASSERT_EQ(importer().init().result, host::imNoErr);
    setInitialised(true);
    EXPECT_THAT(log().newLines(),
                Contains("[bgra] : - - - -  PrPixelFormat_BGRA_4444_8u (err: ffffffff 22 0) - 1634887522"));
}

// --- every call of a session ---

simhost::SessionOptions shortSession(const std::string& path) {
    simhost::SessionOptions options;
    options.pathUtf8 = path;
    options.framesPerFormat = 2;
    options.mostFormats = 2;
    options.audioFrames = 400;
    return options;
}

TEST_F(HostFailures, EachCallOfASessionMayFailAndTheNextSessionIsGood) {
    const auto options = shortSession(placeClip());
    const simhost::Plugin plugin(pluginPath(), codecFolder());
    std::uint64_t calls = 0;
    simhost::SessionSummary reference;
    {
        simhost::Host host;
        reference = simhost::runSession(simhost::Importer(host, plugin), options);
        calls = host.totalCalls();
        ASSERT_TRUE(host.isClean()) << host.report();
    }
    ASSERT_EQ(reference.asyncDifferences, 0U);
    ASSERT_GT(reference.frames, 10U);
    ASSERT_GT(calls, 300U);
    for (std::uint64_t n = 1; n <= calls; n = orvantis::test::nextSample(n, 8, 9)) {
        {
            simhost::Host host;
            simhost::FaultPlan plan;  // whatever the service
            plan.nth = n;
            host.addFault(plan);
            const auto summary = simhost::runSession(simhost::Importer(host, plugin), options);
            ASSERT_TRUE(host.isClean()) << "call " << n << "\n" << host.report() << summary.text();
            ASSERT_EQ(host.injectedFaults(), 1U) << "call " << n;
        }
        simhost::Host host;
        const auto summary = simhost::runSession(simhost::Importer(host, plugin), options);
        ASSERT_TRUE(host.isClean()) << "behind call " << n << "\n" << host.report();
        ASSERT_EQ(summary.text(), reference.text()) << "behind call " << n;
        ASSERT_EQ(summary.pictureHash, reference.pictureHash) << "behind call " << n;
        ASSERT_EQ(summary.audioHash, reference.audioHash) << "behind call " << n;
    }
}

TEST_F(HostFailures, EachServiceMayFailForGood) {
    const auto options = shortSession(placeClip());
    const simhost::Plugin plugin(pluginPath(), codecFolder());
    for (std::size_t i = 0; i < simhost::kServiceCount; ++i) {
        const auto service = static_cast<Service>(i);
        simhost::Host host;
        host.addFault(failAlways(service));
        const auto summary = simhost::runSession(simhost::Importer(host, plugin), options);
        EXPECT_TRUE(host.isClean()) << simhost::serviceName(service) << "\n"
                                    << host.report() << summary.text();
    }
}

}  // namespace
