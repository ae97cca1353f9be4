// The asynchronous importer through the loaded plug-in: what each selector answers, and the interleavings
// that matter, each forced rather than hoped for.
#include <atomic>
#include <chrono>
#include <future>
#include <thread>

#include "host/result_codes.h"
#include "host/selectors.h"
#include "tests/integration/async_fixture.h"
#include "tests/support/log_capture.h"

namespace {

class AsyncImporter : public AsyncTest {};

TEST_F(AsyncImporter, DeliversEveryInitiatedFrame) {
    openAsync();
    const auto formats = anySize(kBgra);
    for (std::uint32_t i = 0; i < kClipFrames; ++i) {
        ASSERT_EQ(async().initiate(timeOf(i), formats), host::aiNoError);
    }
    for (std::uint32_t i = 0; i < kClipFrames; ++i) {
        const simhost::FrameAnswer answer = async().getFrame(timeOf(i), formats);
        ASSERT_EQ(answer.result, host::aiNoError);
        ASSERT_TRUE(answer.frame);
        EXPECT_TRUE(showsFrame(*answer.frame, i)) << i;
    }
}

TEST_F(AsyncImporter, FramesAreFoundInAnyOrderByIndexNotByTime) {
    openAsync();
    const auto formats = anySize(kBgra);
    for (const std::uint32_t i : {5u, 30u, 2u}) {
        ASSERT_EQ(async().initiate(timeOf(i), formats), host::aiNoError);
    }
    for (const std::uint32_t i : {2u, 5u, 30u}) {
        const simhost::FrameAnswer answer =
            async().getFrame(timeOf(i) + 1, formats);  // another time, the same frame
        ASSERT_TRUE(answer.frame);
        EXPECT_TRUE(showsFrame(*answer.frame, i)) << i;
    }
}

TEST_F(AsyncImporter, AFrameNeverAskedForIsDecodedOnDemand) {
    orvantis::test::LogCapture log;
    openAsync();
    static_cast<void>(log.takeLines());
    const simhost::FrameAnswer answer = async().getFrame(timeOf(9), anySize(kBgra));
    ASSERT_EQ(answer.result, host::aiNoError);
    ASSERT_TRUE(answer.frame);
    EXPECT_TRUE(showsFrame(*answer.frame, 9));

    const std::string time = std::to_string(timeOf(9));
    const std::vector<std::string> lines = log.takeLines();
    const std::vector<std::string> opening = {
        "[T] [#] ----------------------",
        "[T] [#] [OnGetFrame]",
        "[T] [#] REQUEST: Requesting: 9, frameTime: " + time,
        "[T] [#] REQUEST: ERROR: Frame not found: 9, frameTime: " + time,
    };
    ASSERT_GT(lines.size(), opening.size() + 2);
    EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + 4), opening);
    EXPECT_EQ(lines[lines.size() - 2], "[T] [#] Decoded 9: PrPixelFormat_BGRA_4444_8u");
    EXPECT_EQ(lines.back(), "[T] [#]     OnGetFrame: [aiNoError] (0), [imNoErr] (0)");
}

TEST_F(AsyncImporter, InitiateLogsAndNeverWaits) {
    orvantis::test::LogCapture log;
    openAsync();
    ServiceGate gate(host(), simhost::Service::kCreatePPix);
    ASSERT_EQ(async().initiate(timeOf(0), anySize(kBgra)), host::aiNoError);
    gate.waitForArrival();
    static_cast<void>(log.takeLines());
    // The task of frame 0 is held inside its decode; initiating goes on all the same.
    ASSERT_EQ(async().initiate(timeOf(1), anySize(kBgra)), host::aiNoError);
    const std::vector<std::string> lines = log.takeLines();
    // The new task may add its own lines behind or between, so the handler's are looked for in order.
    std::size_t at = 0;
    for (const std::string& expected :
         {std::string("[T] [#] ----------------------"), std::string("[T] [#] [OnInitiateAsyncRead]"),
          "[T] [#] REQUEST: Adding: 1, frameTime: " + std::to_string(timeOf(1)),
          std::string("[T] [#]     OnInitiateAsyncRead: [aiNoError] (0)")}) {
        while (at < lines.size() && lines[at] != expected) {
            ++at;
        }
        EXPECT_LT(at, lines.size()) << expected;
    }
    gate.open();
}

TEST_F(AsyncImporter, TwoRequestsForOneFrameAreServedOldestFirst) {
    openAsync();
    ASSERT_EQ(async().initiate(timeOf(4), anySize(kArgb)), host::aiNoError);
    ASSERT_EQ(async().initiate(timeOf(4) + 5, anySize(kBgra)), host::aiNoError);
    const simhost::FrameAnswer first = async().getFrame(timeOf(4), anySize(kBgra));
    const simhost::FrameAnswer second = async().getFrame(timeOf(4), anySize(kBgra));
    ASSERT_TRUE(first.frame && second.frame);
    EXPECT_EQ(first.frame->pixelFormat(), kArgb);
    EXPECT_EQ(second.frame->pixelFormat(), kBgra);
    EXPECT_TRUE(showsFrame(*first.frame, 4));
    EXPECT_TRUE(showsFrame(*second.frame, 4));
}

TEST_F(AsyncImporter, CancelIsUnsupportedAndLeavesTheRequestPending) {
    orvantis::test::LogCapture log;
    openAsync();
    ASSERT_EQ(async().initiate(timeOf(3), anySize(kBgra)), host::aiNoError);
    EXPECT_EQ(async().cancel(timeOf(3), anySize(kBgra)), host::aiUnsupported);
    static_cast<void>(log.takeLines());
    ASSERT_TRUE(async().getFrame(timeOf(3), anySize(kBgra)).frame);
    for (const std::string& line : log.takeLines()) {
        EXPECT_EQ(line.find("Frame not found"), std::string::npos) << line;
    }
}

TEST_F(AsyncImporter, OtherSelectorsAreUnsupported) {
    openAsync();
    for (const std::int32_t selector : {5, 6, 7, 1000, -1}) {
        EXPECT_EQ(async().call(selector, nullptr), host::aiUnsupported) << selector;
    }
}

TEST_F(AsyncImporter, AnIndexPastTheEndIsAnUnknownError) {
    orvantis::test::LogCapture log;
    openAsync();
    EXPECT_EQ(async().initiate(timeOf(kClipFrames), anySize(kBgra)), host::aiNoError);
    const simhost::FrameAnswer answer = async().getFrame(timeOf(kClipFrames), anySize(kBgra));
    EXPECT_EQ(answer.result, host::aiUnknownError);
    EXPECT_FALSE(answer.frame);
    EXPECT_EQ(log.takeLines().back(), "[T] [#]     OnGetFrame: [aiUnknownError] (2), [imFrameNotFound] (28)");
    EXPECT_EQ(async().getFrame(-timeOf(1), anySize(kBgra)).result, host::aiUnknownError);
    EXPECT_TRUE(async().getFrame(timeOf(kClipFrames - 1), anySize(kBgra)).frame)
        << "the next good request works";
}

TEST_F(AsyncImporter, AFailingHostFrameIsAnUnknownErrorAndTheNextFrameComes) {
    openAsync();
    simhost::FaultPlan fault;
    fault.service = simhost::Service::kCreatePPix;
    host().addFault(fault);
    EXPECT_EQ(async().getFrame(timeOf(0), anySize(kBgra)).result, host::aiUnknownError);
    EXPECT_TRUE(async().getFrame(timeOf(0), anySize(kBgra)).frame);
}

TEST_F(AsyncImporter, AFrameWithoutPixelsIsGivenBack) {
    openAsync();
    simhost::FaultPlan fault;
    fault.service = simhost::Service::kGetPixels;
    host().addFault(fault);
    const std::uint64_t disposed = host().calls(simhost::Service::kDisposePPix);
    EXPECT_EQ(async().getFrame(timeOf(0), anySize(kBgra)).result, host::aiUnknownError);
    EXPECT_EQ(host().calls(simhost::Service::kDisposePPix), disposed + 1);
}

TEST_F(AsyncImporter, AnExceptionInATaskReachesTheGuard) {
    orvantis::test::LogCapture log;
    openAsync();
    EXPECT_EQ(async().initiate(timeOf(1), anySize(host::PrPixelFormat_Raw)), host::aiNoError);
    EXPECT_EQ(async().getFrame(timeOf(1), anySize(host::PrPixelFormat_Raw)).result,
              host::kUnhandledException);
    EXPECT_EQ(log.takeLines().back(),
              "[T] [#] xAsyncImportEntry: FATAL: Unhandled exception during aiGetFrame (3): "
              "GetFormatInfo_by_pixelFormat(): pixel format not found: PrPixelFormat_Raw [raww]");
    EXPECT_TRUE(host().events().empty()) << "only the synchronous entry posts events";
    EXPECT_TRUE(async().getFrame(timeOf(1), anySize(kBgra)).frame);
}

TEST_F(AsyncImporter, ANullPlaceForTheFrameIsRefusedBeforeAnyWork) {
    openAsync();
    ASSERT_EQ(async().initiate(timeOf(2), anySize(kBgra)), host::aiNoError);
    host::imSourceVideoRec record{};
    record.inPrivateData = async().privateData();
    record.inFrameTime = timeOf(2);
    EXPECT_EQ(async().call(host::aiGetFrame, &record), host::kUnhandledException);
    const simhost::FrameAnswer answer = async().getFrame(timeOf(2), anySize(kBgra));
    ASSERT_TRUE(answer.frame) << "the request was still pending";
    EXPECT_EQ(host().calls(simhost::Service::kCreatePPix), 1u);
}

TEST_F(AsyncImporter, FlushWaitsForTheTaskThatDecodesAndDisposesOfItsFrame) {
    openAsync();
    ServiceGate gate(host(), simhost::Service::kCreatePPix);
    for (std::uint32_t i = 0; i < 3; ++i) {
        ASSERT_EQ(async().initiate(timeOf(i), anySize(kBgra)), host::aiNoError);
    }
    gate.waitForArrival();
    std::future<std::int32_t> flush = std::async(std::launch::async, [this] { return async().flush(); });
    EXPECT_EQ(flush.wait_for(kWrongCodeWouldBeDone), std::future_status::timeout);
    gate.open();
    EXPECT_EQ(flush.get(), host::aiNoError);
    EXPECT_EQ(host().calls(simhost::Service::kCreatePPix), 1u)
        << "a step that has begun is finished, no more";
    EXPECT_EQ(host().calls(simhost::Service::kDisposePPix), 1u) << "the undelivered frame went back";
}

TEST_F(AsyncImporter, FlushEmptiesTheList) {
    orvantis::test::LogCapture log;
    openAsync();
    ASSERT_EQ(async().initiate(timeOf(6), anySize(kBgra)), host::aiNoError);
    ASSERT_EQ(async().flush(), host::aiNoError);
    EXPECT_EQ(log.takeLines().back(), "[T] [#]     OnFlush: [aiNoError] (0)");
    ASSERT_TRUE(async().getFrame(timeOf(6), anySize(kBgra)).frame);
    bool onDemand = false;
    for (const std::string& line : log.takeLines()) {
        onDemand |=
            line == "[T] [#] REQUEST: ERROR: Frame not found: 6, frameTime: " + std::to_string(timeOf(6));
    }
    EXPECT_TRUE(onDemand);
}

TEST_F(AsyncImporter, CloseWaitsForAGetThatIsWaiting) {
    openAsync();
    ServiceGate gate(host(), simhost::Service::kCreatePPix);
    std::future<simhost::FrameAnswer> get =
        std::async(std::launch::async, [this] { return async().getFrame(timeOf(7), anySize(kBgra)); });
    gate.waitForArrival();
    std::future<std::int32_t> close =
        std::async(std::launch::async, [this] { return async().call(host::aiClose, async().privateData()); });
    EXPECT_EQ(close.wait_for(kWrongCodeWouldBeDone), std::future_status::timeout);
    gate.open();
    const simhost::FrameAnswer answer = get.get();
    EXPECT_EQ(answer.result, host::aiNoError);
    ASSERT_TRUE(answer.frame);
    EXPECT_TRUE(showsFrame(*answer.frame, 7));
    EXPECT_EQ(close.get(), host::aiNoError);
    // The importer is gone: a call that comes too late is turned away, a second close does nothing.
    EXPECT_EQ(async().getFrame(timeOf(7), anySize(kBgra)).result, host::kUnhandledException);
    EXPECT_EQ(async().call(host::aiClose, async().privateData()), host::aiNoError);
}

TEST_F(AsyncImporter, CloseWithPendingRequestsWaitsForThemAndDisposesOfTheirFrames) {
    openAsync();
    for (std::uint32_t i = 0; i < 10; ++i) {
        ASSERT_EQ(async().initiate(timeOf(i), anySize(kBgra)), host::aiNoError);
    }
    // Its turn comes behind the others', so all ten are decoded.
    ASSERT_TRUE(async().getFrame(timeOf(10), anySize(kBgra)).frame);
    EXPECT_EQ(async().call(host::aiClose, async().privateData()), host::aiNoError);
    EXPECT_EQ(host().calls(simhost::Service::kCreatePPix), 11u);
    EXPECT_EQ(host().calls(simhost::Service::kDisposePPix), 10u) << "all but the one that was collected";
}

TEST_F(AsyncImporter, CloseOfNothingIsFine) {
    openAsync();
    EXPECT_EQ(async().call(host::aiClose, nullptr), host::aiNoError);
}

TEST_F(AsyncImporter, TwoGetsForOneFrameBothReceiveIt) {
    openAsync();
    ServiceGate gate(host(), simhost::Service::kCreatePPix);
    const auto get = [this] { return async().getFrame(timeOf(11), anySize(kBgra)); };
    std::future<simhost::FrameAnswer> first = std::async(std::launch::async, get);
    gate.waitForArrival();
    std::future<simhost::FrameAnswer> second = std::async(std::launch::async, get);
    gate.open();
    for (auto* each : {&first, &second}) {
        const simhost::FrameAnswer answer = each->get();
        ASSERT_EQ(answer.result, host::aiNoError);
        ASSERT_TRUE(answer.frame);
        EXPECT_TRUE(showsFrame(*answer.frame, 11));
    }
}

TEST_F(AsyncImporter, OtherCallsGoOnWhileAGetWaits) {
    openAsync();
    ServiceGate gate(host(), simhost::Service::kCreatePPix);
    std::future<simhost::FrameAnswer> get =
        std::async(std::launch::async, [this] { return async().getFrame(timeOf(0), anySize(kBgra)); });
    gate.waitForArrival();
    // Would wait for ever if the waiting get held the request mutex.
    EXPECT_EQ(async().initiate(timeOf(1), anySize(kBgra)), host::aiNoError);
    gate.open();
    EXPECT_TRUE(get.get().frame);
}

TEST_F(AsyncImporter, OneTaskDecodesAtATime) {
    openAsync();
    std::atomic<int> inside{0}, most{0};
    host().setHook([&](simhost::Service service) {
        // From the creation of a frame to its row bytes a task is inside its decode.
        if (service == simhost::Service::kCreatePPix) {
            const int now = ++inside;
            int known = most.load();
            while (known < now && !most.compare_exchange_weak(known, now)) {
            }
        }
        if (service == simhost::Service::kGetRowBytes) {
            --inside;
        }
    });
    for (std::uint32_t i = 0; i < kClipFrames; ++i) {
        static_cast<void>(async().initiate(timeOf(i), anySize(kBgra)));
    }
    for (std::uint32_t i = 0; i < kClipFrames; ++i) {
        ASSERT_TRUE(async().getFrame(timeOf(i), anySize(kBgra)).frame);
    }
    EXPECT_EQ(most.load(), 1);
}

TEST_F(AsyncImporter, SharesNothingWithTheSynchronousOne) {
    openAsync();
    ASSERT_EQ(async().initiate(timeOf(0), anySize(kBgra)), host::aiNoError);
    ASSERT_EQ(clip().quiet(), host::imNoErr);
    EXPECT_TRUE(async().getFrame(timeOf(1), anySize(kBgra)).frame);
    ASSERT_EQ(clip().close(), host::imNoErr);
    dropClip();
    const simhost::FrameAnswer answer = async().getFrame(timeOf(0), anySize(kBgra));
    ASSERT_TRUE(answer.frame);
    EXPECT_TRUE(showsFrame(*answer.frame, 0));
}

TEST_F(AsyncImporter, AnImporterWithoutVideoAnswersWithTheGuard) {
    orvantis::test::LogCapture log;
    openClip();
    simhost::OpenOptions options;
    options.streamIndex = 1;
    simhost::Clip audioOnly(importer(), orvantis::test::utf8Path(clipPath()), options);
    ASSERT_EQ(audioOnly.openResult(), host::imNoErr);
    simhost::AsyncClip importerWithoutVideo(audioOnly);
    ASSERT_EQ(importerWithoutVideo.creation().result, host::imNoErr) << "19 counts as success";
    EXPECT_EQ(importerWithoutVideo.initiate(0, anySize(kBgra)), host::kUnhandledException);
    EXPECT_EQ(log.takeLines().back(),
              "[T] [#] xAsyncImportEntry: FATAL: Unhandled exception during aiInitiateAsyncRead (0): "
              "m_videoInfo is NULL");
    EXPECT_EQ(importerWithoutVideo.getFrame(0, anySize(kBgra)).result, host::kUnhandledException);
    EXPECT_EQ(importerWithoutVideo.flush(), host::kUnhandledException);
    EXPECT_EQ(importerWithoutVideo.close(), host::aiNoError);
}

TEST_F(AsyncImporter, CreationWritesItsTwoFieldsAndNothingElse) {
    openClip();
    importer().setRecordFill(0xA7);
    const simhost::AsyncClip created(clip());
    importer().setRecordFill(0);
    ASSERT_EQ(created.creation().result, host::imNoErr);
    for (const std::size_t offset : created.creation().changedBytes()) {
        EXPECT_GE(offset, 16u);
    }
    EXPECT_TRUE(created.creation().record.outAsyncEntry != nullptr);
    EXPECT_TRUE(created.creation().record.outAsyncPrivateData != nullptr);
}

TEST_F(AsyncImporter, ARefusedTimeSuiteFailsTheCreationAndLeavesNothing) {
    openClip();
    simhost::FaultPlan fault;
    fault.service = simhost::Service::kAcquireSuite;
    fault.detail = "Premiere Time Suite";
    fault.fromThenOn = true;
    host().addFault(fault);
    const simhost::AsyncClip refused(clip());
    EXPECT_EQ(refused.creation().result, host::kUnhandledException);
    EXPECT_FALSE(refused.isOpen());
    host().clearFaults();
    const simhost::AsyncClip created(clip());
    EXPECT_EQ(created.creation().result, host::imNoErr);
}

}  // namespace
