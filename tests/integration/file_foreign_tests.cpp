// The plug-in's priority puts every .avi of the machine through it: files that are not ours are refused, with
// the exact result and line, and leave nothing behind.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "host/result_codes.h"
#include "tests/integration/plugin_clip_test.h"
#include "tests/integration/plugin_records.h"

namespace {

using orvantis::test::AviBuilder;
using orvantis::test::Bytes;

class ForeignFiles : public ClipTest {
 protected:
    /// Opens, describes and closes a file: the result of the description and its log behind the fixed lines.
    std::pair<std::int32_t, std::string> describe(const Bytes& bytes) {
        simhost::Clip clip(importer(), place(u8"foreign.avi", bytes));
        EXPECT_EQ(clip.openResult(), host::imNoErr);
        static_cast<void>(log().news());
        importer().setRecordFill(0xA7);
        const auto answer = clip.getInfo(0);
        if (answer.result == host::imBadFile) {
            EXPECT_TRUE(wroteExactly(answer, {}));
        }
        const std::string text = log().newsBehind("fileInfoRec8P->streamIdx: 0");
        EXPECT_EQ(clip.close(), host::imNoErr);
        return {answer.result, text};
    }
    static Bytes bytesOf(std::string_view text) { return {text.begin(), text.end()}; }
};

TEST_F(ForeignFiles, AnotherCodecsVideoIsRefusedByTheLibrary) {
    logOn();
    traceCodec();
    startAndInit();
    for (const char* tag : {"MJPG", "DIB ", "H264", "dvsd", "O8YX"}) {
        AviBuilder avi;
        avi.addStream(orvantis::test::videoStream(tag, 640, 480, 25, 1))
            .addStream(orvantis::test::pcmStream(2, 48000, 16));
        for (int i = 0; i < 3; ++i) {
            avi.addFilledChunk(0, 1000, 1).addFilledChunk(1, 1000, 2);
        }
        const auto [result, text] = describe(avi.build());
        EXPECT_EQ(result, host::imBadFile) << tag;
        EXPECT_EQ(text, R"(
VideoInfo::VideoInfo()
Acquiring suite: r: 0, v: 1, n: 'Premiere PPix Creator Suite', ptr: <address>
Acquiring suite: r: 0, v: 6, n: 'Premiere PPix Cache Suite', ptr: <address>
Acquiring suite: r: 0, v: 1, n: 'Premiere PPix Suite', ptr: <address>
Acquiring suite: r: 0, v: 1, n: 'Premiere Time Suite', ptr: <address>
Acquiring suite: r: 0, v: 2, n: 'Premiere Image Processing Suite', ptr: <address>
Acquiring suite: r: 0, v: 1, n: 'Premiere Audio Suite', ptr: <address>
Decompress query failed: Orvantis error (1007): unknown compression: decompressQuery({<address>,40},null)
VideoInfo::~VideoInfo()
    [imBadFile] (2)
)") << tag;
    }
    EXPECT_TRUE(host().events().empty()) << "a foreign file is no internal error";
}

TEST_F(ForeignFiles, WhatIsNoAviIsRefusedByItsFirstTwelveBytes) {
    logOn();
    startAndInit();
    const std::string expected =
        "\nFailed to parse avi: file doesn't look like AVI (first 12 bytes is not 'RIFF'....'AVI ')\n"
        "    [imBadFile] (2)\n";
    for (const Bytes& bytes : {Bytes(), bytesOf("R"), bytesOf("RIFF\4\0\0\0AVI"), bytesOf("RIFF....WAVEfmt "),
                               bytesOf("RIFX....AVI LIST"), bytesOf("riff....AVI LIST"), Bytes(100000, 0),
                               bytesOf("\x1A\x45\xDF\xA3 something else altogether")}) {
        const auto [result, text] = describe(bytes);
        EXPECT_EQ(result, host::imBadFile);
        EXPECT_EQ(text, expected) << std::string(
            bytes.begin(), bytes.begin() + std::min<std::ptrdiff_t>(12, std::ssize(bytes)));
    }
}

TEST_F(ForeignFiles, ReaderTextsAreLoggedAsTheyStand) {
    logOn();
    startAndInit();
    // An AVI form with nothing in it: the reader's text brings its own line end.
    orvantis::test::RiffBuilder empty;
    empty.beginList("RIFF", "AVI ").begin("JUNK").fill(20).end().end();
    const auto [result, text] = describe(empty.take());
    EXPECT_EQ(result, host::imBadFile);
    EXPECT_EQ(text, "\nFailed to parse avi: hdrl missing\n\n    [imBadFile] (2)\n");
}

TEST_F(ForeignFiles, StreamsThatAreNeitherVideoNorSoundAreNoVideo) {
    logOn();
    startAndInit();
    orvantis::test::StreamPlan texts = orvantis::test::videoStream("O8Y2", 16, 4, 25, 1);
    texts.type = orvantis::test::codeOf("txts");
    AviBuilder avi;
    avi.addStream(texts);
    const auto [result, text] = describe(avi.build());
    EXPECT_EQ(result, host::imBadFile);
    EXPECT_EQ(text, "\nAvi has no video stream\n    [imBadFile] (2)\n");
}

TEST_F(ForeignFiles, AVideoStreamWithAnEmptyFormatIsRefused) {
    logOn();
    startAndInit();
    orvantis::test::StreamPlan video = orvantis::test::videoStream("O8Y2", 16, 4, 25, 1);
    video.format.clear();
    AviBuilder avi;
    avi.addStream(video);
    const auto [result, text] = describe(avi.build());
    EXPECT_EQ(result, host::imBadFile);
    EXPECT_TRUE(
        text.ends_with("Compressed format size is invalid\nVideoInfo::~VideoInfo()\n    [imBadFile] (2)\n"))
        << text;
}

TEST_F(ForeignFiles, AVideoStreamWithACutFormatIsRefusedByTheLibrary) {
    logOn();
    startAndInit();
    orvantis::test::StreamPlan video = orvantis::test::videoStream("O8Y2", 16, 4, 25, 1);
    video.format.resize(39);
    AviBuilder avi;
    avi.addStream(video);
    const auto [result, text] = describe(avi.build());
    EXPECT_EQ(result, host::imBadFile);
    EXPECT_NE(text.find("Decompress query failed: Orvantis error (1006): "), std::string::npos) << text;
    EXPECT_NE(text.find(": decompressQuery({<address>,39},null)\n"), std::string::npos) << text;
}

TEST_F(ForeignFiles, ARefusalDoesNotSpoilTheNextFile) {
    logOn();
    traceCodec();
    startAndInit();
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(describe(bytesOf("RIFF....WAVE")).first, host::imBadFile);
        EXPECT_EQ(describe(clips::builder().build()).first, host::imNoErr);
    }
}

TEST_F(ForeignFiles, ARefusedFileMayBeAskedAboutAgain) {
    startAndInit();
    simhost::Clip clip(importer(), place(u8"foreign.avi", clips::builder({.tag = "MJPG"}).build()));
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(clip.getInfo(0).result, host::imBadFile);
        EXPECT_EQ(clip.pixelFormat(0).result, 99);
    }
    // Its sound is none of the video's business.
    EXPECT_EQ(clip.getInfo(1).result, host::imBadStreamIndex);
}

}  // namespace
