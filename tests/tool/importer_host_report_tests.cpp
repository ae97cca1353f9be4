// "importer_host report": one page on a file, by the built program with the built plug-in.
#include <gmock/gmock.h>

#include <filesystem>
#include <string>

#include "tests/integration/plugin_clips.h"
#include "tests/support/environment.h"
#include "tests/tool/tool_run.h"
#include "tool/shared/base/tool_error.h"

namespace {

using orvantis::test::AviBuilder;
using orvantis::test::Bytes;
using orvantis::test::OpenDml;
using simhost::tool::kFailed;
using simhost::tool::kNoOutput;
using simhost::tool::kSuccess;
using testing::HasSubstr;
using testing::Not;

std::size_t count(const std::string& text, const std::string& part) {
    std::size_t out = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++out;
    }
    return out;
}

class ImporterHostReport : public ToolTest {
 protected:
    // The log goes to the user's profile; on Windows that is the real one, which a test leaves alone.
    int report(const std::string& clip) const {
        return run({"report", clip, "--out", in(u8"out"), "--no-log"});
    }
};

TEST_F(ImporterHostReport, TellsEverythingOfASoundClip) {
    const std::string clip = write(u8"cl\u00EFp & 1.avi", clips::builder().build());
    ASSERT_EQ(report(clip), kSuccess);
    const std::string page = read(u8"out/cl\u00EFp & 1.avi.html");
    for (const char* text :
         {"Nothing unusual was found.", "<h1>cl\xC3\xAFp &amp; 1.avi</h1>", "16 × 4", "<dd>O8Y2</dd>",
          "25.000 (25/1)", "00:00:00.200", "PrPixelFormat_YUYV_422_8u_601", ">idx1</td>",
          ">PCM, 16 bits, 2 channels, 8000 Hz</td>", "Sound track 1", "<b>1</b> Front left",
          "<b>2</b> Front right", "frame 4 · 00:00:00.160", "class=\"rate\""}) {
        EXPECT_THAT(page, HasSubstr(text));
    }
    EXPECT_EQ(count(page, "<img alt=\"frame "), 5U);
    EXPECT_EQ(count(page, "<svg class=\"wave\""), 2U);
    EXPECT_THAT(page, Not(HasSubstr("Diagnostic log")));
    std::size_t files = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder / "out")) {
        ++files;
    }
    EXPECT_EQ(files, 1U) << "everything is on the page itself";
}

TEST_F(ImporterHostReport, FramesAreSpreadFromTheFirstToTheLast) {
    const std::string clip = write(u8"a.avi", clips::builder({.frames = 100}).build());
    ASSERT_EQ(run({"report", clip, "--out", in(u8"out"), "--no-log", "--frames", "4"}), kSuccess);
    const std::string page = read(u8"out/a.avi.html");
    EXPECT_EQ(count(page, "<img alt=\"frame "), 4U);
    for (const char* frame : {"frame 0 ", "frame 33 ", "frame 66 ", "frame 99 "}) {
        EXPECT_THAT(page, HasSubstr(frame));
    }
}

// Everything that a file can have and still be played: each oddity in plain words.
TEST_F(ImporterHostReport, SaysWhatIsOddAboutAClip) {
    AviBuilder avi;
    auto video = orvantis::test::videoStream("O8Y2", clips::kWidth, clips::kHeight, 2997, 100);
    video.length = 7;
    avi.addStream(video).addStream(compressedSound());
    for (std::uint32_t i = 0; i < 6; ++i) {
        avi.addChunk(0, i == 2 || i == 3 ? Bytes{} : clips::codedPicture(i));
        avi.addFilledChunk(1, 100, 7);
    }
    avi.openDml(OpenDml::kSuperIndex);
    Bytes bytes = avi.build();
    // The kind of the video's index (behind the chunk's header, the entries' size and the sub-kind).
    bytes[avi.indxOffset(0) + 8 + 3] = 9;
    ASSERT_EQ(report(write(u8"odd.avi", bytes)), kSuccess);
    const std::string page = read(u8"out/odd.avi.html");
    constexpr const char* kAdjusted =
        "The frame rate was adjusted: the file tells 2997/100 frames a second, the host is told 30000/1001.";
    for (const char* text :
         {"Stream 0 (pictures): its OpenDML index is damaged", ">idx1 (OpenDML refused)</td>",
          ">OpenDML</td>", "the header tells 7 frames, the index holds 6",
          "2 of 6 frames hold no data (at most 2 in a row)", "· <em>empty</em>", kAdjusted,
          "The sound of stream 1 cannot be used.", "the sound is compressed", "format 0x2000, 2 channels"}) {
        EXPECT_THAT(page, HasSubstr(text));
    }
    EXPECT_THAT(page, Not(HasSubstr("Nothing unusual")));
}

TEST_F(ImporterHostReport, ASilentPlaceholderHasItsReason) {
    AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O8Y2", clips::kWidth, clips::kHeight, 25, 1));
    avi.addStream(orvantis::test::pcmStream(2, clips::kSampleRate, 16)).addStream(compressedSound());
    for (std::uint32_t i = 0; i < 3; ++i) {
        avi.addChunk(0, clips::codedPicture(i)).addChunk(1, clips::codedSound(320 * i, 320));
        avi.addFilledChunk(2, 100, 7);
    }
    ASSERT_EQ(report(write(u8"two.avi", avi.build())), kSuccess);
    const std::string page = read(u8"out/two.avi.html");
    EXPECT_THAT(page, HasSubstr("Sound track 1"));
    EXPECT_THAT(page, HasSubstr("Sound track 2"));
    EXPECT_EQ(count(page, "the host is told of a silent one in its place"), 1U);
    EXPECT_THAT(page, HasSubstr("The sound of stream 2 cannot be used."));
}

// The last chunk lies behind the end of the file: the page has what can be had and says what is missing.
TEST_F(ImporterHostReport, WhatCannotBeReadIsShownAsMissing) {
    AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O8Y2", clips::kWidth, clips::kHeight, 25, 1));
    for (std::uint32_t i = 0; i < 3; ++i) {
        avi.addChunk(0, clips::codedPicture(i));
    }
    Bytes bytes = avi.build();
    // The place of the third of the 16-byte entries of idx1.
    for (std::size_t i = 0; i < 3; ++i) {
        bytes[avi.idx1Offset() + 8 + 2 * 16 + 8 + i] = 0x7F;
    }
    ASSERT_EQ(report(write(u8"cut.avi", bytes)), kSuccess);
    const std::string page = read(u8"out/cut.avi.html");
    EXPECT_THAT(page, HasSubstr("1 of 3 chunks lie behind the end of the file"));
    EXPECT_THAT(page, HasSubstr("1 of the 3 frames below could not be delivered"));
    EXPECT_EQ(count(page, "class=\"lost\""), 1U);
    EXPECT_EQ(count(page, "<img alt=\"frame "), 2U);
}

// As a program leaves it that writes to a pipe: no index, and lengths that nobody filled in. Six hours of
// silence are not read.
TEST_F(ImporterHostReport, ARecordingThroughAPipeIsToldInRedAndNotHeard) {
    AviBuilder avi;
    auto video = orvantis::test::videoStream("O8Y2", clips::kWidth, clips::kHeight, 25, 1);
    auto sound = orvantis::test::pcmStream(2, 48000, 16);
    video.length = sound.length = 0x40000000;
    avi.addStream(video).addStream(sound).idx1(false);
    for (std::uint32_t i = 0; i < 3; ++i) {
        avi.addChunk(0, clips::codedPicture(i)).addFilledChunk(1, 1920, 1);
    }
    ASSERT_EQ(report(write(u8"piped.avi", avi.build())), kSuccess);
    const std::string page = read(u8"out/piped.avi.html");
    EXPECT_THAT(page,
                HasSubstr("<ul class=\"notes\"><li class=\"bad\">The file has no usable index, so nothing "
                          "of it can be shown or heard."));
    EXPECT_THAT(page, HasSubstr("importer_host rescue OLD.avi --out NEW.avi"));
    EXPECT_EQ(count(page, "no usable index"), 1U) << "told once";
    EXPECT_THAT(page, HasSubstr("No index leads to data of this track, so all of it is silent."));
    EXPECT_EQ(count(page, "<svg class=\"wave\""), 0U);
    EXPECT_THAT(page, Not(HasSubstr("No stretch of 64 KiB")));
}

// The header claims hours, the file holds a second: as much is read and drawn.
TEST_F(ImporterHostReport, SoundIsReadAsFarAsTheFileHasData) {
    AviBuilder avi;
    auto sound = orvantis::test::pcmStream(2, 8000, 16);
    sound.length = 0x10000000;
    avi.addStream(orvantis::test::videoStream("O8Y2", clips::kWidth, clips::kHeight, 25, 1)).addStream(sound);
    for (std::uint32_t i = 0; i < 25; ++i) {
        avi.addChunk(0, clips::codedPicture(i)).addChunk(1, clips::codedSound(320 * i, 320));
    }
    ASSERT_EQ(report(write(u8"long.avi", avi.build())), kSuccess);
    const std::string page = read(u8"out/long.avi.html");
    EXPECT_THAT(page, HasSubstr("<dt>Of these in the file</dt><dd>8000, drawn here (00:00:01.000)</dd>"));
    EXPECT_THAT(page, HasSubstr("<dd>268435456</dd>"));
    EXPECT_EQ(count(page, "<svg class=\"wave\""), 2U);
}

TEST_F(ImporterHostReport, AnIndexFromTheFilesBeginningIsToldInRed) {
    auto avi = clips::builder({.frames = 20});
    ASSERT_EQ(report(write(u8"absolute.avi", avi.absoluteIdx1Offsets(true).build())), kSuccess);
    const std::string page = read(u8"out/absolute.avi.html");
    EXPECT_EQ(count(page, "its index (idx1) counts from the beginning of the file"), 2U);
    EXPECT_THAT(page, HasSubstr("idx1 (counts from the file's beginning)"));
    EXPECT_THAT(page, Not(HasSubstr("cut off")));
}

// What is decoded from the wrong place is no good sign.
TEST_F(ImporterHostReport, TheDoctorTakesNoNoiseForPicturesAndSound) {
    auto avi = clips::builder({.frames = 20});
    const std::string clip = write(u8"absolute.avi", avi.absoluteIdx1Offsets(true).build());
    EXPECT_EQ(run({"doctor", clip, "--out", in(u8"doctor.txt")}), kFailed);
    const std::string text = read(u8"doctor.txt");
    EXPECT_EQ(count(text, "but from the wrong place of the file: it is noise"), 3U) << text;
    EXPECT_EQ(count(text, "its index (idx1) counts from the beginning of the file"), 2U);
    EXPECT_THAT(text, HasSubstr("importer_host rescue OLD.avi --out NEW.avi"));
    EXPECT_THAT(text, Not(HasSubstr("ok    decoding")));
    EXPECT_THAT(text, Not(HasSubstr("ok    sound")));
}

TEST_F(ImporterHostReport, WhenNoFrameCanBeShownThatStandsAtTheTop) {
    auto avi = clips::builder();
    Bytes bytes = avi.build();
    // The sizes in idx1: too few bytes for a picture.
    for (std::size_t at = avi.idx1Offset() + 8; at + 16 <= bytes.size(); at += 16) {
        if (bytes[at + 1] == '0') {
            bytes[at + 12] = 8;
        }
    }
    ASSERT_EQ(report(write(u8"broken.avi", bytes)), kSuccess);
    const std::string page = read(u8"out/broken.avi.html");
    EXPECT_THAT(page,
                HasSubstr("<ul class=\"notes\"><li class=\"bad\">No frame of this clip can be shown. The "
                          "first one: This frame could not be decoded"));
    EXPECT_EQ(count(page, "<div class=\"lost\">This frame could not be decoded"), 5U);
    EXPECT_THAT(page, Not(HasSubstr("imBadCompression")));
    EXPECT_THAT(page, Not(HasSubstr("The log"))) << "there is none";
}

TEST_F(ImporterHostReport, ThePageNamesCodingVersionsAndDates) {
    ASSERT_EQ(report(write(u8"a.avi", clips::builder().build())), kSuccess);
    const std::string page = read(u8"out/a.avi.html");
    const std::string tool = "<dt>Tool</dt><dd>importer_host " ORVANTIS_PROJECT_VERSION "</dd>";
    EXPECT_THAT(page, HasSubstr(tool));
    for (const char* text : {"<dt>Codec</dt><dd>Orvantis 8-bit YUV 4:2:2</dd>",
                             "<dt>Colour space</dt><dd>YUV, colour at half the width (4:2:2)",
                             "<dt>Bits per channel</dt><dd>8</dd>", "<dt>Every frame</dt><dd>128 bytes</dd>",
                             "<dt>Last written</dt><dd>20", "<dt>Report made</dt><dd>20", "<dt>Plug-in</dt>",
                             "<dt>Host profile</dt><dd>default</dd>",
                             "aria-label=\"Sound track 1, waveform of channel 2, Front right"}) {
        EXPECT_THAT(page, HasSubstr(text));
    }
}

TEST_F(ImporterHostReport, ARefusedFileHasAPageThatSaysWhy) {
    EXPECT_EQ(report(write(u8"text.avi", Bytes(100, 'x'))), kFailed);
    const std::string page = read(u8"out/text.avi.html");
    EXPECT_THAT(page, HasSubstr("<li class=\"bad\">the plug-in refuses "));
    EXPECT_THAT(page, HasSubstr("The file is no AVI file that can be used"));
}

TEST_F(ImporterHostReport, WithoutAFileOrAPlaceThereIsNoPage) {
    EXPECT_EQ(report(in(u8"missing.avi")), kFailed);
    EXPECT_FALSE(std::filesystem::exists(folder / "out"));
    const std::string clip = write(u8"a.avi", clips::builder().build());
    EXPECT_EQ(run({"report", clip, "--out", clip + "/sub", "--no-log"}), kNoOutput);
}

#ifndef _WIN32
// A line for each chunk of the sound would be millions for a long clip.
TEST_F(ImporterHostReport, TheLogDoesNotGrowWithTheSound) {
    std::filesystem::create_directories(folder / "profile");
    const orvantis::test::ScopedEnvironment profile("ORVANTIS_TEST_PROFILE", in(u8"profile"));
    const std::string clip = write(u8"a.avi", clips::builder({.frames = 5000}).build());
    ASSERT_EQ(run({"--log", "report", clip, "--out", in(u8"out")}), kSuccess);
    std::size_t lines = 0;
    for (const auto& log : std::filesystem::directory_iterator(folder / "profile" / "orvantis" / "adobe")) {
        lines += count(orvantis::test::readFile(log.path()), "\n");
    }
    EXPECT_GT(lines, 100U);
    EXPECT_LT(lines, 2000U);
    const std::string page = read(u8"out/a.avi.html");
    EXPECT_THAT(page, HasSubstr("imImportAudio7"));
    EXPECT_THAT(page, HasSubstr("(4:2:2), Rec.601, limited range")) << "only the log knows it";
    EXPECT_EQ(count(page, "<svg class=\"wave\""), 2U) << "all of the sound was heard";
}

// What a page asks for does not depend on how much there is, so a clip of hours has no longer log to read.
TEST_F(ImporterHostReport, TheLogDoesNotGrowWithTheClip) {
    std::filesystem::create_directories(folder / "profile");
    const orvantis::test::ScopedEnvironment profile("ORVANTIS_TEST_PROFILE", in(u8"profile"));
    std::vector<std::size_t> lines;
    for (const std::uint32_t frames : {100U, 2000U}) {
        const std::string clip = write(u8"a.avi", clips::builder({.frames = frames}).build());
        ASSERT_EQ(run({"--log", "report", clip, "--out", in(u8"out")}), kSuccess);
        std::size_t all = 0;
        for (const auto& log :
             std::filesystem::directory_iterator(folder / "profile" / "orvantis" / "adobe")) {
            all += count(orvantis::test::readFile(log.path()), "\n");
        }
        std::filesystem::remove_all(folder / "profile" / "orvantis");
        lines.push_back(all);
    }
    EXPECT_GT(lines[0], 100U);
    EXPECT_EQ(lines[1], lines[0]);
}

TEST_F(ImporterHostReport, TheLogOfTheRunIsOnThePageAndNowhereElse) {
    std::filesystem::create_directories(folder / "profile");
    const orvantis::test::ScopedEnvironment profile("ORVANTIS_TEST_PROFILE", in(u8"profile"));
    Bytes bytes = clips::builder({.audioStreams = 0}).build();
    const std::string clip = write(u8"a.avi", bytes);
    ASSERT_EQ(run({"report", clip, "--out", in(u8"out")}), kSuccess);
    std::string page = read(u8"out/a.avi.html");
    EXPECT_THAT(page, HasSubstr("<h2>Diagnostic log of this run, no failures</h2><details><summary>"));
    EXPECT_THAT(page, HasSubstr("imGetSourceVideo"));
    EXPECT_FALSE(std::filesystem::exists(folder / "profile" / "orvantis")) << "nothing is left behind";

    ASSERT_EQ(run({"--log", "report", clip, "--out", in(u8"out")}), kSuccess);
    EXPECT_TRUE(std::filesystem::exists(folder / "profile" / "orvantis" / "adobe")) << "asked for";

    EXPECT_EQ(run({"report", write(u8"text.avi", Bytes(100, 'x')), "--out", in(u8"out")}), kFailed);
    page = read(u8"out/text.avi.html");
    EXPECT_THAT(page, HasSubstr("<h2>Diagnostic log of this run, "));
    EXPECT_THAT(page, HasSubstr("<span class=\"bad\">Failed to parse avi: "));
}
#endif

}  // namespace
