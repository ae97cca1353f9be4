// Null pointers where the host's records hold addresses. None crashes; what the plug-in cannot do without is
// answered with 99 before any work is done.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "host/four_char_codes.h"
#include "host/pixel_formats.h"
#include "host/result_codes.h"
#include "host/selectors.h"
#include "tests/integration/plugin_clip_test.h"
#include "tests/integration/plugin_records.h"

namespace {

using simhost::Service;

class NullPointers : public ClipTest {
 protected:
    /// What the last call that ended in 99 said.
    std::string lastEvent() {
        const auto events = host().events();
        return events.empty() ? std::string() : events.back().description;
    }
};

TEST_F(NullPointers, RecordsThatAreMissingAre99) {
    startAndInit();
    std::uint64_t other = 0;
    // The record is the second parameter of these, the first of the last two.
    for (const std::int32_t selector :
         {host::imAnalysis, host::imDataRateAnalysis, host::imImportAudio7, host::imGetIndPixelFormat,
          host::imGetInfo8, host::imOpenFile8, host::imGetSourceVideo, host::imGetAudioChannelLayout}) {
        EXPECT_EQ(importer().call(selector, &other, nullptr), 99) << selector;
        EXPECT_TRUE(lastEvent().ends_with("): record is NULL")) << lastEvent();
    }
    for (const std::int32_t selector : {host::imInit, host::imCreateAsyncImporter}) {
        EXPECT_EQ(importer().call(selector, nullptr, nullptr), 99) << selector;
        EXPECT_TRUE(lastEvent().ends_with("): record is NULL")) << lastEvent();
    }
    EXPECT_EQ(importer().call(host::imGetSubTypeNames, nullptr, nullptr), 99);
    EXPECT_TRUE(lastEvent().ends_with("sub-type record is NULL")) << lastEvent();
    // No block was asked for that nobody could free.
    EXPECT_EQ(host().calls(Service::kNewPtr), 0U);
    EXPECT_EQ(other, 0U);
}

TEST_F(NullPointers, WithoutMemoryFunctionsThereAreNoSubTypes) {
    startAndInit();
    const host::imStdParms whole = host().stdParms();
    host::piSuites noMemory = *whole.piSuites;
    noMemory.memFuncs = nullptr;
    const host::piSuites* const tables[] = {nullptr, &noMemory};
    for (const host::piSuites* const suites : tables) {
        host::imStdParms parms = whole;
        parms.piSuites = const_cast<host::piSuites*>(suites);
        host::imSubTypeDescriptionRec* descriptions = nullptr;
        EXPECT_EQ(plugin().entry()(host::imGetSubTypeNames, &parms, nullptr, &descriptions), 99);
        EXPECT_TRUE(lastEvent().ends_with("memory functions are NULL")) << lastEvent();
        EXPECT_EQ(descriptions, nullptr);
    }
}

TEST_F(NullPointers, PrivateDataThatIsMissingIs99) {
    startAndInit();
    const auto expectNoImporter = [this](std::int32_t result) {
        EXPECT_EQ(result, 99);
        EXPECT_TRUE(lastEvent().ends_with("importer is NULL")) << lastEvent();
    };
    expectNoImporter(importer().callWithRecord(host::imAnalysis, nullptr, host::imAnalysisRec{}).result);
    expectNoImporter(
        importer().callWithRecord(host::imDataRateAnalysis, nullptr, host::imDataRateAnalysisRec{}).result);
    expectNoImporter(
        importer().callWithRecord(host::imImportAudio7, nullptr, host::imImportAudioRec7{}).result);
    expectNoImporter(
        importer().callWithRecord(host::imGetIndPixelFormat, nullptr, host::imIndPixelFormatRec{}).result);
    expectNoImporter(importer().callWithRecord(host::imGetInfo8, nullptr, host::imFileInfoRec8{}).result);
    expectNoImporter(
        importer().callWithRecord(host::imGetSourceVideo, nullptr, host::imSourceVideoRec{}).result);
    expectNoImporter(
        importer()
            .callWithRecord(host::imGetAudioChannelLayout, nullptr, host::imGetAudioChannelLayoutRec{})
            .result);
    host::imAsyncImporterCreationRec creation{};
    expectNoImporter(importer().call(host::imCreateAsyncImporter, &creation, nullptr));
    EXPECT_EQ(simhost::byValue(creation.outAsyncEntry), nullptr);
}

TEST_F(NullPointers, QuietAndCloseOfNoImporterHaveNothingToDo) {
    startAndInit();
    host::imFileRef fileRef = 77;
    EXPECT_EQ(importer().call(host::imQuietFile, &fileRef, nullptr), host::imNoErr);
    EXPECT_EQ(importer().call(host::imCloseFile, &fileRef, nullptr), host::imNoErr);
    EXPECT_EQ(fileRef, 77U);
    EXPECT_TRUE(host().events().empty());
}

TEST_F(NullPointers, ARecordThatAFormatIndexPastTheEndDoesNotNeedIsNotAskedFor) {
    startAndInit();
    EXPECT_EQ(importer().callWithNumber(host::imGetIndFormat, 1, nullptr), host::imBadFormatIndex);
    EXPECT_EQ(importer().callWithNumber(host::imGetIndFormat, 0xFFFFFFFF, nullptr), host::imBadFormatIndex);
    EXPECT_TRUE(host().events().empty());
    EXPECT_EQ(importer().callWithNumber(host::imGetIndFormat, 0, nullptr), 99);
    EXPECT_TRUE(lastEvent().ends_with("): record is NULL")) << lastEvent();
}

TEST_F(NullPointers, AFileReferenceIsNotNeededToOpenQuietOrClose) {
    startAndInit();
    placeClip();
    const std::u16string path = orvantis::test::utf16Path(folder() / "clip.avi");
    host::imFileOpenRec8 record{};
    record.fileinfo.filepath = path.c_str();
    const auto opened = importer().callWithRecord(host::imOpenFile8, nullptr, record);
    ASSERT_EQ(opened.result, host::imNoErr);
    void* const privateData = opened.record.privatedata;
    ASSERT_NE(privateData, nullptr);
    EXPECT_NE(simhost::byValue(opened.record.fileinfo.fileref), simhost::byValue(record.fileinfo.fileref));
    EXPECT_EQ(importer().call(host::imQuietFile, nullptr, privateData), host::imNoErr);
    EXPECT_EQ(importer().call(host::imCloseFile, nullptr, privateData), host::imNoErr);
}

TEST_F(NullPointers, APathThatIsMissingCannotBeOpened) {
    logOn();
    startAndInit();
    static_cast<void>(log().news());
    host::imFileRef fileRef = 77;
    const auto answer = importer().callWithRecord(host::imOpenFile8, &fileRef, host::imFileOpenRec8{});
    EXPECT_EQ(answer.result, host::imBadFile);
    EXPECT_TRUE(wroteExactly(answer, {}));
    EXPECT_EQ(fileRef, 77U);
    EXPECT_EQ(log().newsBehind("m_streamIndex:  -1"), R"(
Open: '', stream: 0
OrvantisImporter::~OrvantisImporter()
    [imBadFile] (2)
)");
}

class NullPointersInAClip : public NullPointers {
 protected:
    void SetUp() override {
        logOn();
        startAndInit();
        describeClip();
        static_cast<void>(log().news());
    }
};

TEST_F(NullPointersInAClip, NoFrameFormatsAreAnEmptyList) {
    for (const std::int32_t count : {0, 1, 5, -1}) {
        host::PPixHand frame = nullptr;
        host::imSourceVideoRec record{};
        record.inPrivateData = clip().privateData();
        record.inFrameFormats = nullptr;
        record.inNumFrameFormats = count;
        record.outFrame = &frame;
        EXPECT_EQ(importer().callWithRecord(host::imGetSourceVideo, nullptr, record).result, host::imOtherErr)
            << count;
        EXPECT_EQ(frame, nullptr);
        EXPECT_EQ(log().newsBehind("m_streamIndex:  0"), R"(
outFrame: <address>
inFrameTime: 0
frameIndex:  0 (total: 5)
inNumFrameFormats: 0
ERROR: frameFormats is empty
    [imOtherErr] (5)
)");
    }
    EXPECT_EQ(host().calls(Service::kCreatePPix), 0U);
}

TEST_F(NullPointersInAClip, ACountOfFormatsBelowOneIsAnEmptyList) {
    const host::imFrameFormat formats[] = {{0, 0, host::PrPixelFormat_YUYV_422_8u_601}};
    for (const std::int32_t count : {0, -1, -2147483647 - 1}) {
        host::PPixHand frame = nullptr;
        host::imSourceVideoRec record{};
        record.inPrivateData = clip().privateData();
        record.inFrameFormats = formats;
        record.inNumFrameFormats = count;
        record.outFrame = &frame;
        EXPECT_EQ(importer().callWithRecord(host::imGetSourceVideo, nullptr, record).result, host::imOtherErr)
            << count;
    }
}

TEST_F(NullPointersInAClip, NoPlaceForTheFrameIs99BeforeAFrameIsMade) {
    const host::imFrameFormat formats[] = {{0, 0, host::PrPixelFormat_YUYV_422_8u_601}};
    host::imSourceVideoRec record{};
    record.inPrivateData = clip().privateData();
    record.inFrameFormats = formats;
    record.inNumFrameFormats = 1;
    EXPECT_EQ(importer().callWithRecord(host::imGetSourceVideo, nullptr, record).result, 99);
    EXPECT_EQ(host().calls(Service::kCreatePPix), 0U);
    EXPECT_EQ(log().newsBehind("m_streamIndex:  0"), R"(
outFrame: <null>
FATAL: Unhandled exception during [imGetSourceVideo] (47): outFrame is NULL
)");
    EXPECT_TRUE(clip().getFrame(0, host::PrPixelFormat_YUYV_422_8u_601).frame.has_value());
}

TEST_F(NullPointersInAClip, NoPlaceForAnAsynchronousFrameIs99AndKeepsTheRequest) {
    simhost::AsyncClip async = clip().createAsync();
    const host::imFrameFormat formats[] = {{0, 0, host::PrPixelFormat_YUYV_422_8u_601}};
    ASSERT_EQ(async.initiate(0, formats), host::aiNoError);
    host::imSourceVideoRec record{};
    record.inPrivateData = async.privateData();
    record.inFrameFormats = formats;
    record.inNumFrameFormats = 1;
    EXPECT_EQ(async.call(host::aiGetFrame, &record), 99);
    // Among those of the task that reads ahead.
    EXPECT_NE(
        log().news().find(
            "\nxAsyncImportEntry: FATAL: Unhandled exception during aiGetFrame (3): outFrame is NULL\n"),
        std::string::npos);
    // The frame that was asked for is still there.
    EXPECT_TRUE(async.getFrame(0, formats).frame.has_value());
    EXPECT_EQ(log().news().find("Frame not found"), std::string::npos);
}

TEST_F(NullPointersInAClip, AsynchronousCallsWithoutRecordOrImporterAre99) {
    simhost::AsyncClip async = clip().createAsync();
    static_cast<void>(log().news());
    EXPECT_EQ(async.call(host::aiInitiateAsyncRead, nullptr), 99);
    EXPECT_EQ(async.call(host::aiGetFrame, nullptr), 99);
    EXPECT_EQ(async.call(host::aiFlush, nullptr), 99);
    host::aiAsyncRequest request{};
    EXPECT_EQ(async.call(host::aiInitiateAsyncRead, &request), 99);
    host::imSourceVideoRec record{};
    EXPECT_EQ(async.call(host::aiGetFrame, &record), 99);
    // Closing nothing is allowed.
    EXPECT_EQ(async.call(host::aiClose, nullptr), host::aiNoError);
    EXPECT_EQ(log().news(), R"(
xAsyncImportEntry: FATAL: Unhandled exception during aiInitiateAsyncRead (0): record is NULL
xAsyncImportEntry: FATAL: Unhandled exception during aiGetFrame (3): record is NULL
xAsyncImportEntry: FATAL: Unhandled exception during aiFlush (2): async importer is NULL
xAsyncImportEntry: FATAL: Unhandled exception during aiInitiateAsyncRead (0): async importer is NULL
xAsyncImportEntry: FATAL: Unhandled exception during aiGetFrame (3): async importer is NULL
)");
    // The asynchronous guard has no error suite to tell.
    EXPECT_TRUE(host().events().empty());
}

TEST_F(NullPointersInAClip, SoundWithoutBuffersIsReadAndNotDelivered) {
    host::imImportAudioRec7 record{};
    record.privateData = clip().privateData();
    record.size = 100;
    EXPECT_EQ(importer().callWithRecord(host::imImportAudio7, nullptr, record).result, host::imNoErr);
    // The position has moved all the same.
    record.position = -1;
    static_cast<void>(log().news());
    EXPECT_EQ(importer().callWithRecord(host::imImportAudio7, nullptr, record).result, host::imNoErr);
    EXPECT_THAT(log().newLines(), testing::Contains("startPos                  : 100"));
    EXPECT_EQ(host().calls(Service::kConvertFrom16Bit), 0U);
}

TEST_F(NullPointersInAClip, AnalysisWithoutABufferOrRoomWritesNothing) {
    for (const std::int32_t size : {0, -1, -2147483647 - 1, 100}) {
        const auto text = clip().analysis(size, false);
        EXPECT_EQ(text.result, host::imNoErr) << size;
        EXPECT_TRUE(wroteExactly(text.answer, {}));
    }
    for (const std::int32_t size : {0, -1}) {
        EXPECT_EQ(clip().analysis(size).result, host::imNoErr);
    }
}

}  // namespace
