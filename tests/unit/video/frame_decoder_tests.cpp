// Who decodes with which session of the codec library.
#include "video/frame_decoder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <optional>
#include <set>
#include <thread>
#include <vector>

#include "tests/support/fake_codec/fake_codec.h"
#include "tests/support/latch.h"
#include "video/orvantis_error.h"

namespace orvantis {
namespace {

using fakecodec::FakeCodec;
using fakecodec::Function;

TEST(FrameDecoder, OneCallAfterTheOtherUsesTheMainSession) {
    FakeCodec library;
    FrameDecoder decoder;
    for (int i = 0; i < 3; ++i) {
        const FrameDecoder::Use use(decoder);
        EXPECT_EQ(&use.session(), &decoder.mainSession());
    }
    EXPECT_EQ(library.openSessions(), 1);
    EXPECT_EQ(library.count(Function::kOpen), 1);
}

TEST(FrameDecoder, ACallThatMeetsAnotherGetsASessionOfItsOwnWhichIsKept) {
    FakeCodec library;
    FrameDecoder decoder;
    std::uint32_t second = 0;
    for (int i = 0; i < 3; ++i) {
        const FrameDecoder::Use outer(decoder);
        const FrameDecoder::Use inner(decoder);
        EXPECT_EQ(&outer.session(), &decoder.mainSession());
        EXPECT_NE(inner.session().codec.handle(), outer.session().codec.handle());
        if (i == 0) {
            second = inner.session().codec.handle();
        }
        EXPECT_EQ(inner.session().codec.handle(), second);
        EXPECT_FALSE(inner.session().begun);
    }
    EXPECT_EQ(library.count(Function::kOpen), 2);
    decoder.dropSpareSession();
    EXPECT_EQ(library.openSessions(), 1);
    const FrameDecoder::Use use(decoder);
    EXPECT_EQ(&use.session(), &decoder.mainSession());
}

TEST(FrameDecoder, OfManyThatMeetOneSessionIsKept) {
    FakeCodec library;
    FrameDecoder decoder;
    {
        const FrameDecoder::Use first(decoder);
        const FrameDecoder::Use second(decoder);
        const FrameDecoder::Use third(decoder);
        EXPECT_EQ(library.openSessions(), 3);
    }
    EXPECT_EQ(library.openSessions(), 2);
}

TEST(FrameDecoder, ASessionThatCannotBeOpenedLeavesTheOthersAlone) {
    FakeCodec library;
    FrameDecoder decoder;
    const FrameDecoder::Use use(decoder);
    library.failAll(Function::kLibraryInit, 12);
    EXPECT_THROW(FrameDecoder::Use{decoder}, OrvantisError);
    library.stopFailing();
    EXPECT_EQ(&use.session(), &decoder.mainSession());
    const FrameDecoder::Use next(decoder);
    EXPECT_NE(&next.session(), &decoder.mainSession());
}

TEST(FrameDecoder, NoTwoThreadsEverUseOneSession) {
    FakeCodec library;
    library.setRecording(false);
    FrameDecoder decoder;
    test::Latch start(4);
    std::mutex mutex;
    std::set<const DecodeSession*> inUse;
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            start.arriveAndWait();
            for (int i = 0; i < 1000; ++i) {
                const FrameDecoder::Use use(decoder);
                {
                    const std::lock_guard lock(mutex);
                    if (!inUse.insert(&use.session()).second) {
                        ++wrong;
                    }
                }
                use.session().pixelFormat = static_cast<std::uint32_t>(i);  // for ThreadSanitizer to see
                const std::lock_guard lock(mutex);
                inUse.erase(&use.session());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_LE(library.openSessions(), 2);
}

}  // namespace
}  // namespace orvantis
