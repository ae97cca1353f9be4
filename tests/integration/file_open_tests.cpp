// Opening, quieting, opening again and closing files, as the host sees it: results, records, handles, and who
// may touch the file afterwards.
#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

#include "host/four_char_codes.h"
#include "host/pixel_formats.h"
#include "host/record_values.h"
#include "host/result_codes.h"
#include "host/selectors.h"
#include "tests/integration/plugin_clip_test.h"
#include "tests/integration/plugin_records.h"

namespace {

namespace fs = std::filesystem;

using clips::kPattern;
using clips::kYuy2;

class FileOpen : public ClipTest {
 protected:
    fs::path clipPath() const { return folder() / "clip.avi"; }
    /// Nobody but the test holds the file: it can be renamed and removed.
    void expectFileIsFree() {
        const fs::path moved = folder() / "moved.avi";
        std::error_code error;
        fs::rename(clipPath(), moved, error);
        EXPECT_FALSE(error) << error.message();
        EXPECT_TRUE(fs::remove(moved, error)) << error.message();
    }
};

TEST_F(FileOpen, WritesTypeReferenceAndPrivateDataAndNothingElse) {
    startAndInit();
    importer().setRecordFill(kPattern);
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.openResult(), host::imNoErr);
    const auto& answer = clip.openAnswer();
    EXPECT_TRUE(wroteExactly(
        answer, {text(8, "VIVA", "filetype 'AVIV', lowest byte first"),
                 number64(20, clip.fileRef(), "fileref"), pointer(36, clip.privateData(), "privatedata")}));
    // The same handle value in both places (simhost compares them), and a real one.
    EXPECT_NE(clip.fileRef(), host::kInvalidFileRef);
    EXPECT_NE(clip.privateData(), nullptr);
}

TEST_F(FileOpen, LeavesTheRecordAloneWhenTheFileIsMissing) {
    logOn();
    startAndInit();
    static_cast<void>(log().news());
    importer().setRecordFill(kPattern);
    const simhost::Clip clip(importer(), orvantis::test::utf8Path(folder() / "missing.avi"));
    EXPECT_EQ(clip.openResult(), host::imBadFile);
    EXPECT_TRUE(wroteExactly(clip.openAnswer(), {}));
    EXPECT_EQ(clip.fileRef(), host::kInvalidFileRef);
    EXPECT_FALSE(fs::exists(folder() / "missing.avi"));
    // The new importer is destroyed at once.
    EXPECT_EQ(log().newsBehind("m_streamIndex:  -1"), R"(
Open: '<folder>/missing.avi', stream: 0
OrvantisImporter::~OrvantisImporter()
    [imBadFile] (2)
)");
}

TEST_F(FileOpen, RefusesAFolder) {
    startAndInit();
    fs::create_directory(folder() / "folder.avi");
    EXPECT_EQ(simhost::Clip(importer(), orvantis::test::utf8Path(folder() / "folder.avi")).openResult(),
              host::imBadFile);
}

TEST_F(FileOpen, RefusesAnEmptyPath) {
    startAndInit();
    EXPECT_EQ(simhost::Clip(importer(), std::u16string()).openResult(), host::imBadFile);
}

TEST_F(FileOpen, RefusesAccessRequestsThatTheHostDoesNotKnow) {
    startAndInit();
    const std::string path = placeClip();
    const auto size = fs::file_size(clipPath());
    for (const std::int32_t access : {5, 2, 3, -1, 1000}) {
        EXPECT_EQ(simhost::Clip(importer(), path, {.readWrite = access}).openResult(), host::imBadFile)
            << access;
    }
    EXPECT_EQ(fs::file_size(clipPath()), size);
    EXPECT_EQ(simhost::Clip(importer(), path, {.readWrite = host::kOpenForReading}).openResult(),
              host::imNoErr);
}

TEST_F(FileOpen, ForReadingAndWritingCreatesTheFileAnew) {
    startAndInit();
    // The host asks for this when it wants to write a file of this type.
    const std::string path = placeClip();
    {
        simhost::Clip clip(importer(), path, {.readWrite = host::kOpenForReadingAndWriting});
        EXPECT_EQ(clip.openResult(), host::imNoErr);
        EXPECT_EQ(clip.getInfo(0).result, host::imBadFile);
    }
    EXPECT_EQ(fs::file_size(clipPath()), 0U);
    const fs::path fresh = folder() / "fresh.avi";
    EXPECT_EQ(simhost::Clip(importer(), orvantis::test::utf8Path(fresh),
                            {.readWrite = host::kOpenForReadingAndWriting})
                  .openResult(),
              host::imNoErr);
    EXPECT_TRUE(fs::exists(fresh));
}

TEST_F(FileOpen, TheAsynchronousImporterOpensAsItsClipWasOpened) {
    startAndInit();
    const std::string path = placeClip();
    const std::string bytes = orvantis::test::readFile(clipPath());
    simhost::Clip clip(importer(), path, {.readWrite = host::kOpenForReadingAndWriting});
    ASSERT_EQ(clip.openResult(), host::imNoErr);
    ASSERT_EQ(clip.quiet(), host::imNoErr);
    // Opened for reading alone, this would be a clip.
    orvantis::test::writeFile(clipPath(), bytes);
    EXPECT_EQ(clip.createAsync().creation().result, host::imBadFile);
    EXPECT_EQ(fs::file_size(clipPath()), 0U);
}

TEST_F(FileOpen, ManyMayReadOneFile) {
    startAndInit();
    const std::string path = placeClip();
    simhost::Clip first(importer(), path);
    simhost::Clip second(importer(), path);
    ASSERT_EQ(first.getInfo(0).result, host::imNoErr);
    ASSERT_EQ(second.getInfo(0).result, host::imNoErr);
    EXPECT_NE(first.privateData(), second.privateData());
    EXPECT_NE(first.fileRef(), second.fileRef());
    // And others too, as long as they only read.
    EXPECT_FALSE(orvantis::test::readFile(clipPath()).empty());
    EXPECT_EQ(first.close(), host::imNoErr);
    EXPECT_TRUE(second.getFrame(2, kYuy2).frame.has_value());
}

TEST_F(FileOpen, NobodyMayWriteAFileThatIsBeingRead) {
    startAndInit();
    const std::string path = placeClip();
    const auto size = fs::file_size(clipPath());
    simhost::Clip reader(importer(), path);
    ASSERT_EQ(reader.getInfo(0).result, host::imNoErr);
    const simhost::Clip writer(importer(), path, {.readWrite = host::kOpenForReadingAndWriting});
    EXPECT_EQ(writer.openResult(), host::imBadFile);
    EXPECT_EQ(fs::file_size(clipPath()), size);
    EXPECT_TRUE(reader.getFrame(0, kYuy2).frame.has_value());
}

TEST_F(FileOpen, NobodyMayReadAFileThatIsBeingWritten) {
    startAndInit();
    const std::string path = placeClip();
    const simhost::Clip writer(importer(), path, {.readWrite = host::kOpenForReadingAndWriting});
    ASSERT_EQ(writer.openResult(), host::imNoErr);
    EXPECT_EQ(simhost::Clip(importer(), path).openResult(), host::imBadFile);
}

TEST_F(FileOpen, CloseFreesTheFileAtOnce) {
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    ASSERT_TRUE(clip.getFrame(0, kYuy2).frame.has_value());
    ASSERT_EQ(clip.close(), host::imNoErr);  // simhost sees to the -1
    expectFileIsFree();
}

TEST_F(FileOpen, CloseFreesARefusedFileAtOnce) {
    startAndInit();
    simhost::Clip clip(importer(), place(u8"clip.avi", orvantis::test::Bytes(4000, 'x')));
    ASSERT_EQ(clip.getInfo(0).result, host::imBadFile);
    ASSERT_EQ(clip.close(), host::imNoErr);
    expectFileIsFree();
}

TEST_F(FileOpen, QuietFreesTheFileAtOnce) {
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    ASSERT_EQ(clip.quiet(), host::imNoErr);
    EXPECT_EQ(clip.fileRef(), host::kInvalidFileRef);
    expectFileIsFree();
    EXPECT_EQ(clip.close(), host::imNoErr);
}

TEST_F(FileOpen, TheLastOfClipAndAsynchronousImporterFreesTheFile) {
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    simhost::AsyncClip async = clip.createAsync();
    ASSERT_EQ(async.creation().result, host::imNoErr);
    ASSERT_EQ(clip.close(), host::imNoErr);
    // The asynchronous one has its own handle and goes on.
    const host::imFrameFormat formats[] = {{0, 0, kYuy2}};
    EXPECT_TRUE(async.getFrame(0, formats).frame.has_value());
    EXPECT_EQ(async.flush(), host::aiNoError);
    EXPECT_EQ(async.close(), host::aiNoError);
    expectFileIsFree();
}

TEST_F(FileOpen, ReopenKeepsTheImporterAndItsAnalyses) {
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    void* const before = clip.privateData();
    ASSERT_EQ(clip.quiet(), host::imNoErr);
    importer().setRecordFill(kPattern);
    const auto answer = clip.reopen();
    EXPECT_EQ(answer.result, host::imNoErr);
    EXPECT_TRUE(wroteExactly(answer, {text(8, "VIVA", "filetype 'AVIV', lowest byte first"),
                                      number64(20, clip.fileRef(), "fileref")}));
    EXPECT_EQ(clip.privateData(), before);
    // No further description is needed.
    EXPECT_EQ(clip.pixelFormats().formats.size(), 4U);
    const auto frame = clip.getFrame(3, kYuy2);
    ASSERT_TRUE(frame.frame.has_value());
    EXPECT_EQ(frame.frame->picture(), clips::yuy2Picture(3));
    EXPECT_EQ(clip.importAudio(0, 10, 2).result, host::imNoErr);
}

TEST_F(FileOpen, ReopenOfAFileThatIsOpenMakesANewHandle) {
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    EXPECT_EQ(clip.reopen().result, host::imNoErr);
    EXPECT_TRUE(clip.getFrame(0, kYuy2).frame.has_value());
    ASSERT_EQ(clip.close(), host::imNoErr);
    expectFileIsFree();
}

TEST_F(FileOpen, ReopenThatFailsKeepsTheImporter) {
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    void* const before = clip.privateData();
    ASSERT_EQ(clip.quiet(), host::imNoErr);
    fs::rename(clipPath(), folder() / "away.avi");
    importer().setRecordFill(kPattern);
    const auto answer = clip.reopen();
    EXPECT_EQ(answer.result, host::imBadFile);
    EXPECT_TRUE(wroteExactly(answer, {}));
    EXPECT_EQ(clip.privateData(), before);
    EXPECT_EQ(clip.getFrame(0, kYuy2).result, host::imFileReadFailed);
    fs::rename(folder() / "away.avi", clipPath());
    EXPECT_EQ(clip.reopen().result, host::imNoErr);
    EXPECT_TRUE(clip.getFrame(0, kYuy2).frame.has_value());
}

TEST_F(FileOpen, AQuietFileCannotBeReadButIsStillDescribed) {
    logOn();
    startAndInit();
    auto avi = clips::builder();
    simhost::Clip clip(importer(), place(u8"clip.avi", avi.build()));
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    ASSERT_EQ(clip.quiet(), host::imNoErr);
    ASSERT_EQ(clip.quiet(), host::imNoErr) << "twice does no harm";

    EXPECT_EQ(clip.pixelFormats().formats.size(), 4U);
    EXPECT_EQ(clip.dataRates().samples.size(), 5U);
    EXPECT_EQ(clip.analysis(2000).result, host::imNoErr);

    static_cast<void>(log().news());
    EXPECT_EQ(clip.getFrame(1, kYuy2).result, host::imFileReadFailed);
    EXPECT_THAT(log().newLines(), testing::Contains("Failed to read frame from AVI: Seek error: offset: " +
                                                    std::to_string(avi.placementsOf(0).at(1).offset)));
    // Sound never fails: what cannot be read is silence.
    const auto sound = clip.importAudio(0, 10, 2);
    EXPECT_EQ(sound.result, host::imNoErr);
    EXPECT_THAT(sound.channels[0], testing::Each(0.0F));
    const std::string where = std::to_string(avi.placementsOf(1).at(0).offset);
    EXPECT_THAT(log().newLines(), testing::Contains("importAudio: seek error: " + where + ", pos: 0"));
}

TEST_F(FileOpen, AQuietFileCannotBeDescribedAnew) {
    logOn();
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    ASSERT_EQ(clip.quiet(), host::imNoErr);
    static_cast<void>(log().news());
    importer().setRecordFill(kPattern);
    const auto answer = clip.getInfo(0);
    EXPECT_EQ(answer.result, host::imBadFile);
    EXPECT_TRUE(wroteExactly(answer, {}));
    EXPECT_EQ(log().newsBehind("fileInfoRec8P->streamIdx: 0"), R"(
VideoInfo::~VideoInfo()
AudioInfo::~AudioInfo()
Failed to parse avi: file doesn't look like AVI (first 12 bytes is not 'RIFF'....'AVI ')
    [imBadFile] (2)
)");
    // The analyses of before are gone.
    EXPECT_EQ(clip.pixelFormat(0).result, 99);
    ASSERT_EQ(clip.reopen().result, host::imNoErr);
    EXPECT_EQ(clip.getInfo(0).result, host::imNoErr);
    EXPECT_TRUE(clip.getFrame(0, kYuy2).frame.has_value());
}

TEST_F(FileOpen, TheImporterRemembersTheStreamItWasOpenedFor) {
    logOn();
    startAndInit();
    simhost::Clip clip(importer(), placeClip({.audioStreams = 3}), {.streamIndex = 2});
    ASSERT_EQ(clip.openResult(), host::imNoErr);
    EXPECT_THAT(log().newLines(), testing::Contains("Open: '<folder>/clip.avi', stream: 2"));
    EXPECT_EQ(clip.getInfo(2).result, host::imBadStreamIndex);
    EXPECT_THAT(log().newLines(), testing::AllOf(testing::Contains("m_streamIndex:  2"),
                                                 testing::Contains("fileInfoRec8P->streamIdx: 2")));
}

TEST_F(FileOpen, EveryClipOfManyIsClosedCleanly) {
    traceCodec();
    startAndInit();
    const std::string path = placeClip();
    std::vector<simhost::Clip> open;
    for (int i = 0; i < 40; ++i) {
        open.emplace_back(importer(), path);
        ASSERT_EQ(open.back().getInfo(0).result, host::imNoErr) << i;
    }
    for (simhost::Clip& clip : open) {
        ASSERT_TRUE(clip.getFrame(4, kYuy2).frame.has_value());
    }
}

}  // namespace
