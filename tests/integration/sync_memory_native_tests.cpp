// What a file that the host has put aside keeps in memory: the allocator is asked.
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#include <sanitizer/allocator_interface.h>
#define ORVANTIS_SANITIZER_ALLOCATOR
#endif
#endif
#ifndef ORVANTIS_SANITIZER_ALLOCATOR
#include <malloc.h>
#endif

#include "tests/integration/sync_calls_fixture.h"

namespace {

std::size_t allocatedBytes() {
#ifdef ORVANTIS_SANITIZER_ALLOCATOR
    return __sanitizer_get_current_allocated_bytes();
#else
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
#endif
}

constexpr std::size_t kMiB = 1 << 20;

class SyncMemory : public SyncCallsTest {
 protected:
    /// Frames of 12 MiB, and a second of sound.
    std::filesystem::path bigClip() {
        using namespace orvantis::test;
        constexpr std::int32_t kWidth = 2048;
        constexpr std::int32_t kHeight = 2048;
        AviBuilder avi;
        avi.addStream(videoStream("O8RG", kWidth, kHeight, 25, 1)).addStream(pcmStream(2, 48000, 32));
        avi.addFilledChunk(0, 3 * kWidth * kHeight, 0x35).addFilledChunk(1, 8 * 48000, 0x11);
        const Bytes bytes = avi.build();
        const auto path = clipPath().parent_path() / "big.avi";
        writeFile(path, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
        return path;
    }
};

TEST_F(SyncMemory, TenQuietedClipsOfLargeFramesKeepLessThanAMebibyte) {
    const orvantis::test::ScopedEnvironment noPixels("ORVANTIS_STANDIN_DECODE", "null");
    const std::u16string path = orvantis::test::utf16Path(bigClip());
    simhost::HostOptions options;
    options.keepTrace = false;
    options.poisonFrames = false;
    start(simhost::defaultProfile(), options);
    setInitialised(importer().init().result == host::imNoErr);
    std::vector<float> left(40'000);
    std::vector<float> right(40'000);

    const std::size_t before = allocatedBytes();
    std::vector<void*> clips;
    for (int i = 0; i < 10; ++i) {
        void* const opened = raw().open(path, nullptr).record.privatedata;
        clips.push_back(opened);
        ASSERT_NE(clips.back(), nullptr);
        ASSERT_EQ(raw().info(clips.back()).result, host::imNoErr);
        ASSERT_TRUE(raw().frame(clips.back(), 0).frame);
        ASSERT_EQ(raw().sound(clips.back(), 0, left, right), host::imNoErr);
    }
    EXPECT_GT(allocatedBytes(), before + 10 * 12 * kMiB) << "buffers are kept from frame to frame";
    for (void* const privateData : clips) {
        ASSERT_EQ(raw().quiet(privateData), host::imNoErr);
    }
    const std::size_t kept = allocatedBytes() - before;
    RecordProperty("bytes", std::to_string(kept));
    EXPECT_LT(kept, kMiB);
    for (void* const privateData : clips) {
        ASSERT_EQ(raw().close(privateData), host::imNoErr);
    }
}

TEST_F(SyncMemory, SessionsOfFramesThatMetAreClosedByQuiet) {
    const orvantis::test::ScopedEnvironment trace(
        "ORVANTIS_STANDIN_LOG", orvantis::test::utf8Path(clipPath().parent_path() / "calls"));
    const auto count = [this](const std::string& call) {
        const std::string text = orvantis::test::readFile(clipPath().parent_path() / "calls");
        std::size_t found = 0;
        for (std::size_t at = text.find(call); at != std::string::npos; at = text.find(call, at + 1)) {
            ++found;
        }
        return found;
    };
    ASSERT_NO_FATAL_FAILURE(openClip());
    const std::size_t closed = count(" close(");
    host().setHook([this, depth = std::make_shared<int>(0)](simhost::Service called) {
        if (called == simhost::Service::kCreatePPix && ++*depth == 1) {
            expectFrame(raw().frame(data(), 0), 0);
        }
    });
    expectFrame(raw().frame(data(), timeOf(1)), 1);
    EXPECT_EQ(count(" close("), closed) << "kept for the next two that meet";
    EXPECT_EQ(raw().quiet(data()), host::imNoErr);
    EXPECT_EQ(count(" close("), closed + 1);
}

}  // namespace
