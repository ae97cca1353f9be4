// Several calls of the host on one synchronous importer at once, and calls from inside a call: the codec
// library or a service of the host is held, so each order is forced.
#include "tests/integration/sync_calls_fixture.h"

namespace {

class SyncCalls : public SyncCallsTest {
 protected:
    /// With the codec held from the first frame on.
    void openHeld() {
        m_gate = std::make_unique<CodecGate>("sync-" + clipPath().parent_path().filename().string());
        ASSERT_NO_FATAL_FAILURE(openClip());
    }
    void TearDown() override {
        if (m_gate) {
            m_gate->letThrough(100);
        }
        SyncCallsTest::TearDown();
        m_gate.reset();
    }
    CodecGate& gate() { return *m_gate; }

    std::future<simhost::FrameAnswer> askFor(std::uint32_t index, std::uint32_t pixelFormat = kBgra) {
        return std::async(std::launch::async, [this, index, pixelFormat, privateData = data()] {
            return raw().frame(privateData, timeOf(index), pixelFormat);
        });
    }
    template <class Call>
    std::future<std::int32_t> onAnotherThread(Call call) {
        return std::async(std::launch::async, call);
    }
    /// Runs once, inside the next CreatePPix.
    void insideCreatePPix(std::function<void()> work) {
        host().setHook(
            [work = std::move(work), done = std::make_shared<bool>(false)](simhost::Service called) {
                if (called != simhost::Service::kCreatePPix || *done) {
                    return;
                }
                *done = true;
                work();
            });
    }

 private:
    std::unique_ptr<CodecGate> m_gate;
};

TEST_F(SyncCalls, AHeldFrameSurvivesARequestOutOfRange) {
    openHeld();
    auto held = askFor(3);
    ASSERT_TRUE(gate().arrived());
    const simhost::FrameAnswer refused = raw().frame(data(), timeOf(kClipFrames + 5));
    EXPECT_EQ(refused.result, host::imFrameNotFound);
    EXPECT_FALSE(refused.frame);
    EXPECT_EQ(host().calls(simhost::Service::kDisposePPix), 0u) << "the held call's frame was given back";
    gate().letThrough();
    expectFrame(held.get(), 3);
}

TEST_F(SyncCalls, AHeldFrameAndAnotherRequestEachDeliverTheirOwn) {
    openHeld();
    auto first = askFor(3);
    ASSERT_TRUE(gate().arrived());
    auto second = askFor(5);
    ASSERT_TRUE(gate().arrived()) << "calls on one importer run side by side";
    EXPECT_EQ(host().calls(simhost::Service::kDisposePPix), 0u);
    gate().letThrough(2);
    expectFrame(first.get(), 3);
    expectFrame(second.get(), 5);
    EXPECT_EQ(host().calls(simhost::Service::kCreatePPix), 2u);
}

TEST_F(SyncCalls, AHeldFrameKeepsItsPixelFormatWhileAnotherIsAskedFor) {
    openHeld();
    auto first = askFor(3, kBgra);
    ASSERT_TRUE(gate().arrived());
    auto second = askFor(5, host::PrPixelFormat_ARGB_4444_8u);
    ASSERT_TRUE(gate().arrived());
    gate().letThrough(2);
    expectFrame(first.get(), 3);
    expectFrame(second.get(), 5);
}

TEST_F(SyncCalls, SoundAndDescriptionsAreDeliveredWhileAFrameIsHeld) {
    openHeld();
    auto held = askFor(3);
    ASSERT_TRUE(gate().arrived());
    std::vector<float> left(1920, -2.0F);
    std::vector<float> right(1920, -2.0F);
    EXPECT_EQ(raw().sound(data(), 0, left, right), host::imNoErr);
    EXPECT_EQ(left.front(), left.back());
    EXPECT_NE(left.front(), -2.0F);
    std::int32_t result = -1;
    EXPECT_NE(raw().text(data(), &result).find("Frames: 40"), std::string::npos);
    EXPECT_EQ(result, host::imNoErr);
    simhost::AsyncClip async(clip());
    EXPECT_EQ(async.creation().result, host::imNoErr);
    EXPECT_FALSE(isDone(held));
    gate().letThrough();
    expectFrame(held.get(), 3);
}

TEST_F(SyncCalls, CloseWaitsForAFrameThatAnotherThreadAsksFor) {
    openHeld();
    void* const privateData = data();
    auto held = askFor(7);
    ASSERT_TRUE(gate().arrived());
    auto closed = onAnotherThread([&] { return raw().close(privateData); });
    EXPECT_FALSE(isDone(closed));
    EXPECT_FALSE(isDone(held));
    gate().letThrough();
    expectFrame(held.get(), 7);
    EXPECT_EQ(closed.get(), host::imNoErr);
    EXPECT_EQ(raw().frame(privateData, timeOf(7)).result, host::kUnhandledException);
    EXPECT_TRUE(lastEvent().ends_with("importer is not open")) << lastEvent();
    forgetClip();
}

TEST_F(SyncCalls, QuietWaitsForAFrameThatAnotherThreadAsksFor) {
    openHeld();
    auto held = askFor(7);
    ASSERT_TRUE(gate().arrived());
    auto quieted = onAnotherThread([&] { return raw().quiet(data()); });
    EXPECT_FALSE(isDone(quieted));
    gate().letThrough();
    expectFrame(held.get(), 7);
    EXPECT_EQ(quieted.get(), host::imNoErr);
    EXPECT_EQ(raw().frame(data(), timeOf(7)).result, host::imFileReadFailed) << "the file is closed";
    ASSERT_EQ(clip().reopen().result, host::imNoErr);
    gate().letThrough();
    expectFrame(raw().frame(data(), timeOf(8)), 8);
}

TEST_F(SyncCalls, ReopeningAndDescribingAnewWaitForAHeldFrame) {
    openHeld();
    for (const bool reopen : {true, false}) {
        auto held = askFor(7);
        ASSERT_TRUE(gate().arrived());
        auto changed = onAnotherThread([&] {
            return reopen ? raw().open(orvantis::test::utf16Path(clipPath()), data()).result
                          : raw().info(data()).result;
        });
        EXPECT_FALSE(isDone(changed)) << (reopen ? "re-open" : "info");
        gate().letThrough();
        expectFrame(held.get(), 7);
        EXPECT_EQ(changed.get(), host::imNoErr);
    }
}

TEST_F(SyncCalls, ACloseFromInsideCreatePPixTakesEffectWhenTheCallLeaves) {
    ASSERT_NO_FATAL_FAILURE(openClip());
    void* const privateData = data();
    std::int32_t closed = -1;
    std::int32_t later = -1;
    const std::uint64_t released = host().calls(simhost::Service::kReleaseSuite);
    insideCreatePPix([&] {
        closed = raw().close(privateData);
        later = raw().frame(privateData, timeOf(1)).result;
        EXPECT_EQ(host().calls(simhost::Service::kReleaseSuite), released) << "the call still needs them";
    });
    expectFrame(raw().frame(privateData, timeOf(7)), 7);
    EXPECT_EQ(closed, host::imNoErr);
    EXPECT_EQ(later, host::kUnhandledException);
    EXPECT_EQ(host().calls(simhost::Service::kReleaseSuite), released + 6) << "the importer is gone";
    EXPECT_EQ(raw().frame(privateData, timeOf(7)).result, host::kUnhandledException);
    forgetClip();
}

TEST_F(SyncCalls, AQuietFromInsideCreatePPixTakesEffectWhenTheCallLeaves) {
    ASSERT_NO_FATAL_FAILURE(openClip());
    std::int32_t quieted = -1;
    insideCreatePPix([&] {
        quieted = raw().quiet(data());
        expectFrame(raw().frame(data(), timeOf(2)), 2);  // the file is still open
    });
    expectFrame(raw().frame(data(), timeOf(7)), 7);
    EXPECT_EQ(quieted, host::imNoErr);
    EXPECT_EQ(raw().frame(data(), timeOf(7)).result, host::imFileReadFailed);
}

TEST_F(SyncCalls, AFrameFromInsideCreatePPixIsDelivered) {
    ASSERT_NO_FATAL_FAILURE(openClip());
    expectFrame(raw().frame(data(), timeOf(2)), 2);
    std::vector<simhost::FrameAnswer> inner;
    insideCreatePPix([&] { inner.push_back(raw().frame(data(), timeOf(5))); });
    expectFrame(raw().frame(data(), timeOf(7)), 7);
    ASSERT_EQ(inner.size(), 1u);
    expectFrame(inner.front(), 5);
}

TEST_F(SyncCalls, WhatChangesTheFileIsRefusedInsideACallOfTheSameThread) {
    ASSERT_NO_FATAL_FAILURE(openClip());
    std::int32_t opened = -1;
    std::int32_t described = -1;
    insideCreatePPix([&] {
        opened = raw().open(orvantis::test::utf16Path(clipPath()), data()).result;
        described = raw().info(data()).result;
    });
    expectFrame(raw().frame(data(), timeOf(7)), 7);
    EXPECT_EQ(opened, host::kUnhandledException);
    EXPECT_EQ(described, host::kUnhandledException);
    EXPECT_TRUE(lastEvent().ends_with("importer is in use by a call of the same thread")) << lastEvent();
    expectFrame(raw().frame(data(), timeOf(8)), 8);
}

TEST_F(SyncCalls, PrivateDataThatIsNoOpenImporterIsAnsweredAndNotTouched) {
    ASSERT_NO_FATAL_FAILURE(openClip());
    void* const stale = data();
    ASSERT_EQ(raw().close(stale), host::imNoErr);
    forgetClip();
    const auto foreign = std::make_unique<std::uint8_t[]>(1);
    for (void* const privateData : {stale, static_cast<void*>(foreign.get()), reinterpret_cast<void*>(8)}) {
        const auto expectRefusal = [this](std::int32_t result) {
            EXPECT_EQ(result, host::kUnhandledException);
            EXPECT_TRUE(lastEvent().ends_with("importer is not open")) << lastEvent();
        };
        std::vector<float> samples(8);
        std::int32_t result = 0;
        expectRefusal(raw().frame(privateData, 0).result);
        expectRefusal(raw().sound(privateData, 0, samples, samples));
        expectRefusal(raw().info(privateData).result);
        expectRefusal(raw().open(orvantis::test::utf16Path(clipPath()), privateData).result);
        static_cast<void>(raw().text(privateData, &result));
        expectRefusal(result);
        host::imIndPixelFormatRec formatRecord{};
        formatRecord.privatedata = privateData;
        expectRefusal(importer().callWithRecord(host::imGetIndPixelFormat, nullptr, formatRecord).result);
        host::imDataRateAnalysisRec rates{};
        rates.privatedata = privateData;
        expectRefusal(importer().callWithRecord(host::imDataRateAnalysis, nullptr, rates).result);
        host::imGetAudioChannelLayoutRec layout{};
        layout.inPrivateData = privateData;
        expectRefusal(importer().callWithRecord(host::imGetAudioChannelLayout, nullptr, layout).result);
        host::imAsyncImporterCreationRec creation{};
        creation.inPrivateData = privateData;
        expectRefusal(importer().call(host::imCreateAsyncImporter, &creation, nullptr));
        expectRefusal(raw().quiet(privateData));
        expectRefusal(raw().close(privateData));
    }
}

}  // namespace
