// The records of the selectors that deliver pictures and sound: most are only read.
#include <gmock/gmock.h>

#include <cstring>
#include <string>
#include <vector>

#include "host/pixel_formats.h"
#include "host/result_codes.h"
#include "host/selectors.h"
#include "tests/integration/plugin_clip_test.h"
#include "tests/integration/plugin_records.h"

namespace {

using clips::kPattern;
using clips::kYuy2;

class MediaRecords : public ClipTest, public testing::WithParamInterface<const char*> {
 protected:
    void SetUp() override {
        startAndInit(*simhost::findProfile(GetParam()));
        describeClip();
        importer().setRecordFill(kPattern);
    }
};

TEST_P(MediaRecords, AFrameRequestIsOnlyRead) {
    const host::imFrameFormat wanted[] = {{0, 0, kYuy2}, {99, 98, 0}};
    host::imFrameFormat formats[2];
    std::memcpy(formats, wanted, sizeof wanted);
    const auto answer = clip().getSourceVideo(0, formats);
    EXPECT_EQ(answer.result, host::imNoErr);
    ASSERT_TRUE(answer.frame.has_value());
    EXPECT_TRUE(wroteExactly(answer.answer, {}));
    // The sizes that stand for "any" are replaced in the plug-in's own copy.
    EXPECT_EQ(0, std::memcmp(formats, wanted, sizeof wanted));
}

TEST_P(MediaRecords, AFrameRequestThatFailsIsOnlyReadToo) {
    const host::imFrameFormat wrongSize[] = {{17, 4, kYuy2}};
    const auto answer = clip().getSourceVideo(0, wrongSize);
    EXPECT_EQ(answer.result, host::imOtherErr);
    EXPECT_TRUE(wroteExactly(answer.answer, {}));
}

TEST_P(MediaRecords, ASoundRequestIsOnlyRead) {
    const auto answer = clip().importAudio(100, 20, 2);
    EXPECT_EQ(answer.result, host::imNoErr);
    EXPECT_TRUE(wroteExactly(answer.answer, {}));
    for (std::size_t i = 0; i < 20; ++i) {
        EXPECT_EQ(answer.channels[0][i], static_cast<float>(100 + i) / 32768.0F);
        EXPECT_EQ(answer.channels[1][i], -static_cast<float>(100 + i) / 32768.0F);
    }
}

TEST_P(MediaRecords, TheLayoutOfStereoIsTwoLabelsFromTheFirstOn) {
    const auto answer = clip().channelLayout(kPattern);
    EXPECT_EQ(answer.result, host::imNoErr);
    EXPECT_TRUE(wroteExactly(answer, {number32(8, 100, "front left"), number32(12, 101, "front right")}));
}

TEST_P(MediaRecords, AnAsynchronousImporterIsAnEntryAndItsData) {
    simhost::AsyncClip async = clip().createAsync();
    const auto& creation = async.creation();
    EXPECT_EQ(creation.result, host::imNoErr);
    const host::imAsyncImporterCreationRec record = creation.record;
    const host::AsyncImportEntryFn entry = record.outAsyncEntry;
    EXPECT_TRUE(wroteExactly(creation, {pointer(16, reinterpret_cast<const void*>(entry), "outAsyncEntry"),
                                        pointer(24, async.privateData(), "outAsyncPrivateData")}));
    EXPECT_NE(async.privateData(), clip().privateData());
    const host::imFrameFormat formats[] = {{0, 0, kYuy2}};
    EXPECT_EQ(async.initiate(0, formats), host::aiNoError);
    const auto frame = async.getFrame(0, formats);
    ASSERT_TRUE(frame.frame.has_value());
    EXPECT_TRUE(wroteExactly(frame.answer, {}));
    EXPECT_EQ(frame.frame->picture(), clips::yuy2Picture(0));
}

TEST_P(MediaRecords, AnAsynchronousImporterThatIsRefusedWritesNothing) {
    ASSERT_EQ(clip().quiet(), host::imNoErr);
    orvantis::test::writeFile(folder() / "clip.avi", "no clip any more");
    const simhost::AsyncClip async = clip().createAsync();
    EXPECT_EQ(async.creation().result, host::imBadFile);
    EXPECT_TRUE(wroteExactly(async.creation(), {}));
}

TEST_P(MediaRecords, AnAsynchronousImporterWithoutItsFileIsRefused) {
    ASSERT_EQ(clip().quiet(), host::imNoErr);
    std::filesystem::remove(folder() / "clip.avi");
    const simhost::AsyncClip async = clip().createAsync();
    EXPECT_EQ(async.creation().result, host::imBadFile);
    EXPECT_TRUE(wroteExactly(async.creation(), {}));
}

TEST_P(MediaRecords, QuietAndCloseSetWhateverReferenceTheHostHoldsToMinusOne) {
    const std::u16string path = orvantis::test::utf16Path(folder() / "clip.avi");
    host::imFileOpenRec8 record{};
    record.fileinfo.filepath = path.c_str();
    const auto opened = importer().callWithRecord(host::imOpenFile8, nullptr, record);
    ASSERT_EQ(opened.result, host::imNoErr);
    void* const privateData = opened.record.privatedata;
    for (const std::int32_t selector : {host::imQuietFile, host::imQuietFile, host::imCloseFile}) {
        host::imFileRef reference = 0x1122334455667788;
        EXPECT_EQ(importer().call(selector, &reference, privateData), host::imNoErr);
        EXPECT_EQ(reference, 0xFFFFFFFFFFFFFFFFU);
    }
}

INSTANTIATE_TEST_SUITE_P(Hosts, MediaRecords, testing::Values("default", "older"),
                         [](const testing::TestParamInfo<const char*>& host) { return host.param; });

}  // namespace
