// Steps and bytes of an asynchronous importer, counted: what is read behind a flush, and what buffers stay.
// Seen from the hooks of the native file and, where there is one, the sanitizer's account of the heap.
#include <atomic>
#include <cstdint>
#include <future>
#include <thread>

#include "bench/sparse_avi.h"
#include "host/result_codes.h"
#include "tests/integration/async_codec_gate.h"
#include "tests/integration/async_fixture.h"
#include "tests/support/file_hooks.h"
#include "tests/support/latch.h"
#include "tests/support/log_capture.h"

// Of the sanitizers' common interface; null in a build without.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes() __attribute__((weak));

namespace {

constexpr std::uint32_t kMebibyte = 1 << 20;

class AsyncSteps : public AsyncTest {
 protected:
    std::int32_t initiate(std::uint32_t index) { return async().initiate(timeOf(index), anySize(kBgra)); }
};

// One frame stands in the codec and the next in the middle of its read when the flush comes.
TEST_F(AsyncSteps, BehindAFlushNoReadAndNoDecodeBegins) {
    orvantis::test::LogCapture log;
    orvantis::test::InstalledFileHooks hooks;
    std::atomic<int> frameReads = 0;
    orvantis::test::Latch reading(1), readOn(1);
    hooks->beforeRead = [&](std::uint64_t bytes) {
        if (bytes != kFrameBytes || ++frameReads != 2) {
            return;
        }
        reading.countDown();
        readOn.wait();
    };
    CodecGate gate("steps-" + clipPath().parent_path().filename().string());
    openAsync();
    ASSERT_EQ(initiate(0), host::aiNoError);
    ASSERT_TRUE(gate.arrived());
    for (std::uint32_t i = 1; i < 7; ++i) {
        ASSERT_EQ(initiate(i), host::aiNoError);
    }
    reading.wait();
    auto flushed = std::async(std::launch::async, [this] { return async().flush(); });
    for (bool seen = false; !seen; std::this_thread::yield()) {
        for (const std::string& line : log.takeLines()) {
            seen |= line.find("[OnFlush]") != std::string::npos;
        }
    }
    EXPECT_EQ(flushed.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    readOn.countDown();
    gate.letThrough();
    EXPECT_EQ(flushed.get(), host::aiNoError);
    EXPECT_EQ(frameReads, 2) << "frame 2 and on were read for nobody";
    EXPECT_FALSE(gate.anotherArrived()) << "frame 1 was decompressed for nobody";
    EXPECT_EQ(host().calls(simhost::Service::kCreatePPix), 1u);
    EXPECT_EQ(host().calls(simhost::Service::kDisposePPix), 1u);
    dropAsync();
    dropClip();
    stop();
    EXPECT_EQ(hooks->opened, hooks->closes);
}

class AsyncSpares : public AsyncSteps {
 protected:
    /// What the heap holds more than at the last call of start().
    std::size_t grown() const {
        const std::size_t now = __sanitizer_get_current_allocated_bytes();
        return now > m_atStart ? now - m_atStart : 0;
    }
    void start() { m_atStart = __sanitizer_get_current_allocated_bytes(); }
    /// All requests first, so that all of their buffers are in use at once.
    void playAtOnce(const simhost::AsyncClip& playing, std::uint32_t frames) {
        for (std::uint32_t i = 0; i < frames; ++i) {
            ASSERT_EQ(playing.initiate(timeOf(i), anySize(kBgra)), host::aiNoError);
        }
        for (std::uint32_t i = 0; i < frames; ++i) {
            ASSERT_TRUE(playing.getFrame(timeOf(i), anySize(kBgra)).frame);
        }
    }

 private:
    std::size_t m_atStart = 0;
};

TEST_F(AsyncSpares, AreBoundedByTheirBytesAndFreedByAFlush) {
    if (__sanitizer_get_current_allocated_bytes == nullptr) {
        GTEST_SKIP() << "nobody counts the heap's bytes";
    }
    constexpr std::uint32_t kFrames = 12;
    openAsync();
    orvantis::test::TempFolder folder;
    orvantis::bench::SparseAviPlan plan;  // chunks far larger than the pictures
    plan.codec = "O8RG";
    plan.frames = kFrames;
    plan.framesPerSecond = 25;
    plan.frameBytes = 8 * kMebibyte;
    orvantis::bench::writeSparseAvi((folder / "large.avi").string(), plan);
    simhost::Clip large(importer(), orvantis::test::utf8Path(folder / "large.avi"));
    ASSERT_EQ(large.openResult(), host::imNoErr);
    ASSERT_EQ(large.getInfo(0).result, host::imNoErr);
    const simhost::AsyncClip playing(large);
    ASSERT_EQ(playing.creation().result, host::imNoErr);
    start();
    playAtOnce(playing, kFrames);
    EXPECT_LE(grown(), std::size_t{65} * kMebibyte);
    EXPECT_GE(grown(), std::size_t{64} * kMebibyte) << "what fits is kept for the next frames";
    playAtOnce(playing, kFrames);
    EXPECT_LE(grown(), std::size_t{65} * kMebibyte);
    ASSERT_EQ(playing.flush(), host::aiNoError);
    EXPECT_LE(grown(), kMebibyte / 2);
}

}  // namespace
