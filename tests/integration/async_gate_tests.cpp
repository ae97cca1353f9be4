// Interleavings around a frame that the codec library is decompressing: the library itself is held, so each
// order is forced.
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "host/result_codes.h"
#include "host/selectors.h"
#include "tests/integration/async_codec_gate.h"
#include "tests/integration/async_fixture.h"
#include "tests/support/log_capture.h"

namespace {

class AsyncCodecGate : public AsyncTest {
 protected:
    void open() {
        // Gates are known to the whole system; the folder's name is this test's alone.
        const std::string name = "async-" + clipPath().parent_path().filename().string();
        m_gate = std::make_unique<CodecGate>(name);
        ASSERT_NO_FATAL_FAILURE(openAsync());
    }
    void TearDown() override {
        if (m_gate) {
            m_gate->letThrough(100);
        }
        AsyncTest::TearDown();
        m_gate.reset();
    }

    CodecGate& gate() { return *m_gate; }
    std::int32_t initiate(std::uint32_t index) { return async().initiate(timeOf(index), anySize(kBgra)); }
    std::future<simhost::FrameAnswer> get(std::uint32_t index) {
        return std::async(std::launch::async,
                          [this, index] { return async().getFrame(timeOf(index), anySize(kBgra)); });
    }
    std::future<std::int32_t> flush() {
        return std::async(std::launch::async, [this] { return async().flush(); });
    }
    std::future<std::int32_t> close() {
        return std::async(std::launch::async,
                          [this] { return async().call(host::aiClose, async().privateData()); });
    }
    std::uint64_t created() { return host().calls(simhost::Service::kCreatePPix); }
    std::uint64_t disposed() { return host().calls(simhost::Service::kDisposePPix); }

    static void expectFrame(std::future<simhost::FrameAnswer>& answered, std::uint32_t index) {
        const simhost::FrameAnswer answer = answered.get();
        EXPECT_EQ(answer.result, host::aiNoError);
        ASSERT_TRUE(answer.frame);
        EXPECT_TRUE(showsFrame(*answer.frame, index)) << index;
    }
    /// Waits until a flush is at work, told by its line.
    static void waitForFlush(orvantis::test::LogCapture& log) {
        const auto isItsLine = [](const std::string& line) {
            return line.find("[OnFlush]") != std::string::npos;
        };
        for (bool seen = false; !seen; std::this_thread::yield()) {
            const std::vector<std::string> lines = log.takeLines();
            seen = std::any_of(lines.begin(), lines.end(), isItsLine);
        }
    }
    /// Waits until a close is at work: further calls are turned away.
    void waitForClose() {
        while (initiate(kClipFrames) != host::kUnhandledException) {
            std::this_thread::yield();
        }
    }
    template <class Result>
    static bool isDone(std::future<Result>& future) {
        return future.wait_for(kWrongCodeWouldBeDone) == std::future_status::ready;
    }

 private:
    std::unique_ptr<CodecGate> m_gate;
};

TEST_F(AsyncCodecGate, OneFrameIsDecompressedAtATime) {
    open();
    ASSERT_EQ(initiate(0), host::aiNoError);
    ASSERT_EQ(initiate(1), host::aiNoError);
    ASSERT_TRUE(gate().arrived());
    auto first = get(0);
    EXPECT_FALSE(isDone(first));
    EXPECT_FALSE(gate().anotherArrived()) << "frame 1 waits for frame 0 to be done";
    gate().letThrough();
    ASSERT_TRUE(gate().arrived());
    gate().letThrough();
    expectFrame(first, 0);
    auto second = get(1);
    expectFrame(second, 1);
}

TEST_F(AsyncCodecGate, AFlushFinishesTheFrameThatIsDecompressedAndBeginsNoOther) {
    orvantis::test::LogCapture log;
    open();
    for (std::uint32_t i = 0; i < 7; ++i) {
        ASSERT_EQ(initiate(i), host::aiNoError);
    }
    ASSERT_TRUE(gate().arrived());
    auto flushed = flush();
    waitForFlush(log);
    EXPECT_FALSE(isDone(flushed)) << "a step that has begun is finished";
    gate().letThrough();
    EXPECT_EQ(flushed.get(), host::aiNoError);
    EXPECT_FALSE(gate().anotherArrived()) << "decompressed for nobody";
    EXPECT_EQ(created(), 1u);
    EXPECT_EQ(disposed(), 1u) << "the undelivered frame went back before the flush returned";
    gate().letThrough();
    auto next = get(1);
    expectFrame(next, 1);
    EXPECT_EQ(created(), 2u);
}

// The turn is the waiting get's, which a flush does not drop; what stands in line behind it is dropped.
TEST_F(AsyncCodecGate, AFlushDoesNotWaitForAGetThatIsInFrontOfWhatItDrops) {
    open();
    auto waiting = get(0);
    ASSERT_TRUE(gate().arrived());
    for (std::uint32_t i = 1; i < 7; ++i) {
        ASSERT_EQ(initiate(i), host::aiNoError);
    }
    EXPECT_EQ(async().flush(), host::aiNoError);
    EXPECT_FALSE(isDone(waiting));
    gate().letThrough();
    expectFrame(waiting, 0);
    EXPECT_FALSE(gate().anotherArrived());
    EXPECT_EQ(created(), 1u);
    EXPECT_EQ(disposed(), 0u);
}

TEST_F(AsyncCodecGate, AGetTakesItsRequestOutOfTheMiddleAndAFlushDropsTheRest) {
    orvantis::test::LogCapture log;
    open();
    for (std::uint32_t i = 0; i < 7; ++i) {
        ASSERT_EQ(initiate(i), host::aiNoError);
    }
    ASSERT_TRUE(gate().arrived());
    auto waiting = get(4);
    EXPECT_FALSE(isDone(waiting));
    auto flushed = flush();
    waitForFlush(log);
    EXPECT_FALSE(isDone(flushed));
    gate().letThrough();  // frame 0, which had begun
    EXPECT_EQ(flushed.get(), host::aiNoError);
    ASSERT_TRUE(gate().arrived()) << "those in front of frame 4 are dropped";
    gate().letThrough();
    expectFrame(waiting, 4);
    EXPECT_EQ(created(), 2u);
    EXPECT_EQ(disposed(), 1u);
}

TEST_F(AsyncCodecGate, WhatAFlushDropsWritesNoLinesOfStepsThatDidNotRun) {
    orvantis::test::LogCapture log;
    open();
    for (std::uint32_t i = 0; i < 3; ++i) {
        ASSERT_EQ(initiate(i), host::aiNoError);
    }
    ASSERT_TRUE(gate().arrived());
    auto flushed = flush();
    waitForFlush(log);
    EXPECT_FALSE(isDone(flushed));
    static_cast<void>(log.takeLines());
    gate().letThrough();
    EXPECT_EQ(flushed.get(), host::aiNoError);
    EXPECT_EQ(log.takeLines(), (std::vector<std::string>{"[T] [#]     OnFlush: [aiNoError] (0)"}));
}

TEST_F(AsyncCodecGate, ARequestDuringAFlushWaitsForItAndIsServed) {
    orvantis::test::LogCapture log;
    open();
    ASSERT_EQ(initiate(4), host::aiNoError);
    ASSERT_TRUE(gate().arrived());
    auto flushed = flush();
    EXPECT_FALSE(isDone(flushed));
    auto late = get(4);
    EXPECT_FALSE(isDone(late));
    gate().letThrough(2);  // the flushed one, then the late one
    EXPECT_EQ(flushed.get(), host::aiNoError);
    expectFrame(late, 4);
    EXPECT_EQ(created(), 2u) << "the flush dropped the first";
    EXPECT_EQ(disposed(), 1u);
}

TEST_F(AsyncCodecGate, AGetThatWaitsDoesNotHoldUpTheFlushOfTheOthers) {
    open();
    auto waiting = get(0);
    ASSERT_TRUE(gate().arrived());
    // Its request belongs to the call; the list is empty, so the flush has nothing to wait for.
    EXPECT_EQ(async().flush(), host::aiNoError);
    gate().letThrough();
    expectFrame(waiting, 0);
    EXPECT_EQ(disposed(), 0u);
}

TEST_F(AsyncCodecGate, CloseWaitsForAGetWhoseFrameIsDecompressed) {
    open();
    auto waiting = get(7);
    ASSERT_TRUE(gate().arrived());
    auto closed = close();
    EXPECT_FALSE(isDone(closed));
    EXPECT_FALSE(isDone(waiting));
    gate().letThrough();
    expectFrame(waiting, 7);
    EXPECT_EQ(closed.get(), host::aiNoError);
    EXPECT_EQ(async().getFrame(timeOf(7), anySize(kBgra)).result, host::kUnhandledException);
}

TEST_F(AsyncCodecGate, ASecondCloseNeitherWaitsForTheFirstNorDisturbsIt) {
    open();
    auto waiting = get(7);
    ASSERT_TRUE(gate().arrived());
    auto closed = close();
    waitForClose();
    auto again = close();
    ASSERT_EQ(again.wait_for(std::chrono::seconds(20)), std::future_status::ready);
    EXPECT_EQ(again.get(), host::aiNoError);
    EXPECT_FALSE(isDone(closed));
    gate().letThrough();
    expectFrame(waiting, 7);
    EXPECT_EQ(closed.get(), host::aiNoError);
}

TEST_F(AsyncCodecGate, CloseFinishesTheFrameThatNobodyCollectsAndGivesItBack) {
    open();
    for (std::uint32_t i = 0; i < 7; ++i) {
        ASSERT_EQ(initiate(i), host::aiNoError);
    }
    ASSERT_TRUE(gate().arrived());
    auto closed = close();
    waitForClose();
    EXPECT_FALSE(isDone(closed));
    gate().letThrough();
    EXPECT_EQ(closed.get(), host::aiNoError);
    EXPECT_FALSE(gate().anotherArrived());
    EXPECT_EQ(created(), 1u);
    EXPECT_EQ(disposed(), 1u);
}

// A call that is inside gets its frame; what stands between is not decompressed first.
TEST_F(AsyncCodecGate, CloseDropsWhatStandsInFrontOfAGetThatIsInside) {
    open();
    for (std::uint32_t i = 0; i < 7; ++i) {
        ASSERT_EQ(initiate(i), host::aiNoError);
    }
    ASSERT_TRUE(gate().arrived());
    auto waiting = get(6);
    EXPECT_FALSE(isDone(waiting));
    auto closed = close();
    waitForClose();
    EXPECT_FALSE(isDone(closed));
    gate().letThrough(2);
    expectFrame(waiting, 6);
    EXPECT_EQ(closed.get(), host::aiNoError);
    EXPECT_EQ(created(), 2u);
    EXPECT_EQ(disposed(), 1u);
}

TEST_F(AsyncCodecGate, TwoGetsForOneFrameEachReceiveOneOfTheirOwn) {
    open();
    auto first = get(11);
    ASSERT_TRUE(gate().arrived());
    auto second = get(11);  // finds the first one's request taken out, and makes its own
    EXPECT_FALSE(isDone(second));
    gate().letThrough();
    expectFrame(first, 11);
    EXPECT_FALSE(isDone(second));
    ASSERT_TRUE(gate().arrived());
    gate().letThrough();
    expectFrame(second, 11);
    EXPECT_EQ(created(), 2u);
    EXPECT_EQ(disposed(), 0u);
}

TEST_F(AsyncCodecGate, OfTwoRequestsForOneFrameTheOlderIsTakenFirst) {
    open();
    ASSERT_EQ(async().initiate(timeOf(3), anySize(kBgra)), host::aiNoError);
    ASSERT_TRUE(gate().arrived());
    ASSERT_EQ(async().initiate(timeOf(3), anySize(kArgb)), host::aiNoError);
    auto first = get(3);
    EXPECT_FALSE(isDone(first));
    gate().letThrough();
    const simhost::FrameAnswer older = first.get();
    ASSERT_TRUE(older.frame);
    EXPECT_EQ(older.frame->pixelFormat(), kBgra);
    gate().letThrough();
    auto second = get(3);
    const simhost::FrameAnswer younger = second.get();
    ASSERT_TRUE(younger.frame);
    EXPECT_EQ(younger.frame->pixelFormat(), kArgb);
}

TEST_F(AsyncCodecGate, AFailedDecompressionEndsTheWaitOfItsGetAlone) {
    open();
    dropAsync();
    // Read when the next importer starts the codec.
    const orvantis::test::ScopedEnvironment plan("ORVANTIS_STANDIN_FAIL", "decompress:1");
    simhost::AsyncClip failing(clip());
    ASSERT_EQ(failing.creation().result, host::imNoErr);
    ASSERT_EQ(failing.initiate(timeOf(0), anySize(kBgra)), host::aiNoError);
    ASSERT_TRUE(gate().arrived());
    ASSERT_EQ(failing.initiate(timeOf(1), anySize(kBgra)), host::aiNoError);
    gate().letThrough(2);
    const simhost::FrameAnswer refused = failing.getFrame(timeOf(0), anySize(kBgra));
    EXPECT_EQ(refused.result, host::aiUnknownError);
    EXPECT_FALSE(refused.frame);
    const simhost::FrameAnswer good = failing.getFrame(timeOf(1), anySize(kBgra));
    ASSERT_TRUE(good.frame);
    EXPECT_TRUE(showsFrame(*good.frame, 1));
    EXPECT_EQ(disposed(), 1u) << "the failed frame went back to the host";
}

}  // namespace
