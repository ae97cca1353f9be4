// Reading and decompressing overlap: seen from the hooks of the native file and the gate of the codec.
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "host/result_codes.h"
#include "tests/integration/async_codec_gate.h"
#include "tests/integration/async_fixture.h"
#include "tests/support/file_hooks.h"
#include "tests/support/latch.h"
#include "tests/support/log_capture.h"

namespace {

class AsyncOverlap : public AsyncTest {};

TEST_F(AsyncOverlap, TheNextFrameIsReadWhileOneIsDecompressed) {
    orvantis::test::InstalledFileHooks hooks;
    CodecGate gate("overlap-" + clipPath().parent_path().filename().string());
    openAsync();
    ASSERT_EQ(async().initiate(timeOf(0), anySize(kBgra)), host::aiNoError);
    ASSERT_TRUE(gate.arrived());
    const std::uint64_t before = hooks->bytesRead;
    ASSERT_EQ(async().initiate(timeOf(1), anySize(kBgra)), host::aiNoError);
    // Frame 0 stands in the codec until it is let through below, so only reading ahead can bring these bytes.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (hooks->bytesRead < before + kFrameBytes && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    EXPECT_GE(hooks->bytesRead, before + kFrameBytes);
    EXPECT_FALSE(gate.anotherArrived()) << "read, but not decompressed";
    gate.letThrough(2);
    for (std::uint32_t i = 0; i < 2; ++i) {
        const simhost::FrameAnswer answer = async().getFrame(timeOf(i), anySize(kBgra));
        ASSERT_TRUE(answer.frame);
        EXPECT_TRUE(showsFrame(*answer.frame, i));
    }
    dropAsync();
    dropClip();
    stop();
    EXPECT_EQ(hooks->opened, hooks->closes);
}

// A read waits for the device, and a thread that waits leaves its processor to whichever was put behind it;
// one that decodes does not.
TEST_F(AsyncOverlap, WhoHasReadAFrameReadsTheNextAndLeavesTheDecodingToAnother) {
    constexpr std::uint32_t kRounds = 9, kFrames = 7;
    orvantis::test::LogCapture log;
    orvantis::test::InstalledFileHooks hooks;
    std::vector<std::thread::id> readers;  // one reads at a time
    std::unique_ptr<orvantis::test::Latch> prepared;
    hooks->beforeRead = [&](std::uint64_t bytes) {
        if (bytes == kFrameBytes) {
            prepared->wait();
            readers.push_back(std::this_thread::get_id());
        }
    };
    openAsync();
    std::uint32_t stayed = 0;
    for (std::uint32_t round = 0; round < kRounds; ++round) {
        prepared = std::make_unique<orvantis::test::Latch>(1);
        for (std::uint32_t i = 0; i < kFrames; ++i) {
            ASSERT_EQ(async().initiate(timeOf(i), anySize(kBgra)), host::aiNoError);
        }
        for (std::uint32_t seen = 0; seen < kFrames; std::this_thread::yield()) {
            for (const std::string& line : log.takeLines()) {
                seen += line.find("inFrameFormats[0]") != std::string::npos ? 1 : 0;
            }
        }
        prepared->countDown();
        for (std::uint32_t i = 0; i < kFrames; ++i) {
            ASSERT_TRUE(async().getFrame(timeOf(i), anySize(kBgra)).frame);
        }
        ASSERT_EQ(readers.size(), kFrames);
        stayed += readers[1] == readers[0] ? 1 : 0;
        readers.clear();
    }
    // A request that has prepared itself and not yet come to its turn when that is due reads on its own
    // thread.
    EXPECT_GT(stayed, kRounds / 2);
    dropAsync();
    dropClip();
    stop();
}

}  // namespace
