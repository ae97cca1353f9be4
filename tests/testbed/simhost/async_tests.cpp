#include "simhost/async_clip.h"

#include <gtest/gtest.h>

#include "fake_plugin.h"
#include "host/pixel_formats.h"
#include "host/selectors.h"

namespace simhost {
namespace {

class AsyncClipTest : public ::testing::Test {
 protected:
    AsyncClipTest() {
        test::makeWellBehaved(fake);
        fake.on[host::imCreateAsyncImporter] = [this](auto*, void* address, void* unused) {
            EXPECT_EQ(unused, nullptr);
            auto* record = static_cast<host::imAsyncImporterCreationRec*>(address);
            file = record->inPrivateData;
            record->outAsyncEntry = test::fakeAsyncEntry();
            record->outAsyncPrivateData = &sim;
            return host::imNoErr;
        };
        fake.onAsync[host::aiFlush] = [this](void* param) {
            order += "flush ";
            EXPECT_EQ(param, &sim);
            return host::aiNoError;
        };
        fake.onAsync[host::aiClose] = [this](void* param) {
            order += "close ";
            EXPECT_EQ(param, &sim);
            return host::aiNoError;
        };
    }
    Host sim;
    test::FakePlugin fake;
    Importer importer{sim, fake.plugin};
    void* file = nullptr;
    std::string order;
};

constexpr host::imFrameFormat kWanted[] = {{0, 0, host::PrPixelFormat_BGRA_4444_8u}};

TEST_F(AsyncClipTest, IsCreatedOnTheClipAndFlushedBeforeItIsClosed) {
    Clip clip(importer, "a");
    {
        const AsyncClip async = clip.createAsync();
        EXPECT_EQ(async.creation().result, 0);
        EXPECT_EQ(file, clip.privateData());
    }
    EXPECT_EQ(order, "flush close ");
}

TEST_F(AsyncClipTest, ARefusalLeavesNothingToClose) {
    fake.on.erase(host::imCreateAsyncImporter);
    Clip clip(importer, "a");
    {
        const AsyncClip async = clip.createAsync();
        EXPECT_EQ(async.creation().result, host::imUnsupported);
        EXPECT_FALSE(async.isOpen());
    }
    EXPECT_EQ(order, "");
    EXPECT_TRUE(sim.violations().empty());
}

TEST_F(AsyncClipTest, SuccessWithoutAnEntryIsAViolation) {
    fake.on[host::imCreateAsyncImporter] = [](auto*, void*, void*) { return host::imNoErr; };
    Clip clip(importer, "a");
    EXPECT_FALSE(clip.createAsync().isOpen());
    EXPECT_EQ(texts(sim.violations()),
              (std::vector<std::string>{"async.importer: imCreateAsyncImporter, "
                                        "imAsyncImporterCreationRec.outAsyncEntry: null with result 0"}));
}

TEST_F(AsyncClipTest, TheTwoRequestRecordsDiffer) {
    Clip clip(importer, "a");
    const AsyncClip async = clip.createAsync();
    fake.onAsync[host::aiInitiateAsyncRead] = [this](void* address) {
        const auto record = *static_cast<host::aiAsyncRequest*>(address);
        EXPECT_EQ(byValue(record.inPrivateData), static_cast<void*>(&sim));
        EXPECT_EQ(byValue(record.inSourceRec.inFrameTime), 1234);
        EXPECT_EQ(byValue(record.inSourceRec.inNumFrameFormats), 1);
        EXPECT_EQ(byValue(record.inSourceRec.inFrameFormats), kWanted);
        EXPECT_EQ(byValue(record.inSourceRec.outFrame), nullptr);
        return host::aiNoError;
    };
    fake.onAsync[host::aiGetFrame] = [this, &clip](void* address) {
        auto record = *static_cast<host::imSourceVideoRec*>(address);
        EXPECT_EQ(byValue(record.inPrivateData), static_cast<void*>(&sim));
        EXPECT_EQ(byValue(record.inFrameTime), 1234);
        record.inPrivateData = clip.privateData();
        // NOLINTNEXTLINE(clang-analyzer-core.CallAndMessage): the fake outlives its calls
        return fake.on[host::imGetSourceVideo](nullptr, nullptr, &record);
    };
    EXPECT_EQ(async.initiate(1234, kWanted), 0);
    EXPECT_EQ(async.cancel(1234, kWanted), host::aiUnsupported);
    const FrameAnswer answer = async.getFrame(1234, kWanted);
    ASSERT_TRUE(answer.frame);
    EXPECT_EQ(answer.frame->pictureRow(0)[0], 1);
    EXPECT_EQ(texts(sim.violations()), std::vector<std::string>{});
}

TEST_F(AsyncClipTest, CloseComesOnce) {
    Clip clip(importer, "a");
    AsyncClip async = clip.createAsync();
    EXPECT_EQ(async.flush(), 0);
    EXPECT_EQ(async.close(), 0);
    EXPECT_EQ(async.close(), 0);
    EXPECT_EQ(order, "flush close ");
}

}  // namespace
}  // namespace simhost
