// Files that change or vanish behind the plug-in's back, paths that lead nowhere, and frames whose size the
// file cannot back. What differs between the systems is what they let others do to a file that is open.
#include <gmock/gmock.h>

#include <array>
#include <filesystem>
#include <system_error>

#include "host/pixel_formats.h"
#include "host/result_codes.h"
#include "tests/integration/plugin_clip_test.h"

namespace {

namespace fs = std::filesystem;
using testing::Contains;

using clips::kYuy2;
using Bytes = orvantis::test::Bytes;

class ChangedFiles : public ClipTest {
 protected:
    fs::path file() const { return folder() / "clip.avi"; }

    static void expectFrame(const simhost::Clip& clip, std::uint32_t index) {
        const auto answer = clip.getFrame(index, kYuy2);
        ASSERT_EQ(answer.result, host::imNoErr) << index;
        EXPECT_EQ(answer.frame->picture(), clips::yuy2Picture(index)) << index;
    }
    void expectFailedFrame(const simhost::Clip& clip, std::uint32_t index, const std::string& line) {
        static_cast<void>(log().newLines());
        const auto answer = clip.getFrame(index, kYuy2);
        EXPECT_EQ(answer.result, host::imFileReadFailed) << index;
        EXPECT_FALSE(answer.frame);
        EXPECT_THAT(log().newLines(), Contains(line));
    }
};

TEST_F(ChangedFiles, PathsThatLeadNowhereAreBadFiles) {
    startAndInit();
    for (const char* path : {"\\\\no-such-server\\share\\clip.avi", "//no-such-server/share/clip.avi",
                             "Q:\\clip.avi", "Q:/no/such/folder/clip.avi", "\\\\?\\Q:\\clip.avi", "\\\\?\\",
                             "C:\\no such folder\\clip.avi", "?*<>|\""}) {
        const simhost::Clip clip(importer(), path);
        EXPECT_EQ(clip.openResult(), host::imBadFile) << path;
        EXPECT_EQ(clip.privateData(), nullptr) << path;
    }
    simhost::Clip good(importer(), placeClip());
    ASSERT_EQ(good.getInfo(0).result, host::imNoErr);
    expectFrame(good, 0);
}

TEST_F(ChangedFiles, AReadOnlyFileIsPlayed) {
    startAndInit();
    const std::string path = placeClip();
    fs::permissions(file(), fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
    {
        simhost::Clip clip(importer(), path);
        EXPECT_EQ(clip.getInfo(0).result, host::imNoErr);
        expectFrame(clip, 4);
        const simhost::AsyncClip async = clip.createAsync();
        EXPECT_EQ(async.creation().result, host::imNoErr);
    }
    fs::permissions(file(), fs::perms::owner_all);
}

TEST_F(ChangedFiles, AFileReplacedWhileItIsQuietIsReadWithTheOldAnalysis) {
    logOn();
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    ASSERT_EQ(clip.quiet(), host::imNoErr);
    // An editor writes a new file and puts it in the place of the old one: here the same clip, cut in
    // frame 2.
    auto avi = clips::builder();
    Bytes cut = avi.build();
    const std::uint64_t third = avi.placementsOf(0).at(2).offset;
    cut.resize(third + 10);
    place(u8"new.avi", cut);
    fs::rename(folder() / "new.avi", file());
    ASSERT_EQ(clip.reopen().result, host::imNoErr);
    expectFrame(clip, 0);
    expectFrame(clip, 1);
    expectFailedFrame(clip, 2, "Failed to read frame from AVI: Read error: size: 128, read: 10");
    expectFailedFrame(clip, 4, "Failed to read frame from AVI: Read error: size: 128, read: 0");
    // Gone altogether.
    ASSERT_EQ(clip.quiet(), host::imNoErr);
    fs::remove(file());
    EXPECT_EQ(clip.reopen().result, host::imBadFile);
    EXPECT_NE(clip.getFrame(0, kYuy2).result, host::imNoErr);
    EXPECT_EQ(clip.close(), host::imNoErr);
}

#ifdef _WIN32
TEST_F(ChangedFiles, AFileThatIsOpenCanBeNeitherCutNorReplacedNorRenamed) {
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    place(u8"new.avi", Bytes(100));
    std::error_code error;
    fs::resize_file(file(), 100, error);
    EXPECT_TRUE(error) << "cut";
    fs::rename(folder() / "new.avi", file(), error);
    EXPECT_TRUE(error) << "replaced";
    fs::rename(file(), folder() / "moved.avi", error);
    EXPECT_TRUE(error) << "renamed";
    for (std::uint32_t i = 0; i < 5; ++i) {
        expectFrame(clip, i);
    }
    ASSERT_EQ(clip.quiet(), host::imNoErr);
    fs::rename(file(), folder() / "moved.avi", error);
    EXPECT_FALSE(error) << error.message();
}
#else
TEST_F(ChangedFiles, AFileCutWhileItIsOpenFailsItsMissingFramesAlone) {
    logOn();
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    expectFrame(clip, 4);
    auto avi = clips::builder();
    static_cast<void>(avi.build());
    fs::resize_file(file(), avi.placementsOf(0).at(2).offset + 127);
    expectFrame(clip, 1);
    expectFailedFrame(clip, 2, "Failed to read frame from AVI: Read error: size: 128, read: 127");
    expectFailedFrame(clip, 3, "Failed to read frame from AVI: Read error: size: 128, read: 0");
    expectFrame(clip, 0);
}
#endif

TEST_F(ChangedFiles, ClaimsThatTheFileCannotBackAnswerLikeAShortRead) {
    logOn();
    startAndInit();
    auto avi = clips::builder();
    const Bytes good = avi.build();
    const std::uint64_t offset = avi.placementsOf(0).at(1).offset;
    const std::uint64_t left = good.size() - offset;
    for (const std::uint64_t claim : {left + 1, std::uint64_t{0x7FFFFFFF}, std::uint64_t{0xFFFFFFFF}}) {
        Bytes bytes = good;
        // Picture 1 is entry 2 of idx1 (picture, sound, picture): 8 bytes of header, 16 an entry, size at 12.
        for (std::size_t i = 0; i < 4; ++i) {
            bytes[avi.idx1Offset() + 8 + 2 * 16 + 12 + i] = static_cast<std::uint8_t>(claim >> (8 * i));
        }
        simhost::Clip clip(importer(), place(u8"claim.avi", bytes));
        ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
        const std::string line = "Failed to read frame from AVI: Read error: size: " + std::to_string(claim) +
                                 ", read: " + std::to_string(left);
        expectFailedFrame(clip, 1, line);
        expectFrame(clip, 2);
        simhost::AsyncClip async = clip.createAsync();
        const host::imFrameFormat wanted[] = {{0, 0, kYuy2}};
        EXPECT_EQ(async.getFrame(clip.frameTime(1), wanted).result, host::aiUnknownError);
        EXPECT_THAT(log().newLines(), Contains(line));
    }
    EXPECT_EQ(host().calls(simhost::Service::kDisposePPix), 0U)
        << "no frame is made for bytes that are not there";
}

TEST_F(ChangedFiles, AFormatThatTheFileCannotBackIsRefusedLikeOneThatIsCut) {
    logOn();
    startAndInit();
    auto avi = clips::builder();
    const Bytes good = avi.build();
    // LIST strl: 12 bytes, then strh with 8 and 56, then the size of strf at 4.
    const std::size_t size = avi.strlOffset(0) + 12 + 8 + 56 + 4;
    ASSERT_EQ(good.at(size), 40U);
    const auto refusalOf = [&](const Bytes& bytes) {
        simhost::Clip clip(importer(), place(u8"format.avi", bytes));
        static_cast<void>(log().news());
        EXPECT_EQ(clip.getInfo(0).result, host::imBadFile);
        return log().news();
    };
    Bytes cut = good;
    cut.resize(size + 4 + 39);
    Bytes claimed = good;
    for (std::size_t i = 0; i < 4; ++i) {
        claimed[size + i] = i == 3 ? 0x7F : 0xF0;
    }
    const std::string asCut = refusalOf(cut);
    EXPECT_TRUE(asCut.ends_with("\nAvi has no video stream\n    [imBadFile] (2)\n")) << asCut;
    EXPECT_EQ(refusalOf(claimed), asCut);
}

TEST_F(ChangedFiles, PathsBeyondTheOldLimitOf260CharactersArePlayed) {
    startAndInit();
    fs::path deep = folder().path();
    while (deep.native().size() < 400) {
        deep /= "0123456789012345678901234567890123456789";
    }
#ifdef _WIN32
    const fs::path reached = L"\\\\?\\" + fs::path(deep).make_preferred().wstring();
#else
    const fs::path reached = deep;
#endif
    std::error_code error;
    fs::create_directories(reached, error);
    if (error) {
        fs::create_directories(deep, error);
    }
    ASSERT_FALSE(error) << error.message();
    const Bytes bytes = clips::builder().build();
    orvantis::test::writeFile(reached / "clip.avi",
                              {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    simhost::Clip clip(importer(), orvantis::test::utf8Path(reached / "clip.avi"));
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    expectFrame(clip, 3);
    const simhost::AsyncClip async = clip.createAsync();
    EXPECT_EQ(async.creation().result, host::imNoErr) << "the path is passed on whole";
    // Without the prefix it is the system that decides; the plug-in has to take either answer.
    simhost::Clip plain(importer(), orvantis::test::utf8Path(deep / "clip.avi"));
    RecordProperty("opens_without_prefix", plain.isOpen() ? 1 : 0);
    if (plain.isOpen()) {
        ASSERT_EQ(plain.getInfo(0).result, host::imNoErr);
        expectFrame(plain, 3);
    } else {
        EXPECT_EQ(plain.openResult(), host::imBadFile);
    }
}

}  // namespace
