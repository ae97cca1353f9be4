// Reading and decompressing overlap: seen from the hooks of the native file and the gate of the codec.
#include <chrono>
#include <thread>

#include "host/result_codes.h"
#include "tests/integration/async_codec_gate.h"
#include "tests/integration/async_fixture.h"
#include "tests/support/file_hooks.h"

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

}  // namespace
