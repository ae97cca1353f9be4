// The codec library fails: each of its functions, at the call where it matters, and then at every call of a
// session.
#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "host/four_char_codes.h"
#include "host/pixel_formats.h"
#include "host/result_codes.h"
#include "host/selectors.h"
#include "simhost/session.h"
#include "simhost/text.h"
#include "tests/integration/plugin_clip_test.h"
#include "tests/support/format_lists.h"
#include "tests/support/thorough.h"

namespace {

using simhost::Service;
using testing::Contains;

using clips::kYuy2;
constexpr std::uint32_t kUyvy = host::PrPixelFormat_UYVY_422_8u_601;

// The stand-in's text for the code that it fails with unless told otherwise.
constexpr const char* kInjected = "Orvantis error (1900): injected fault: ";

class CodecFailures : public ClipTest {
 protected:
    void ready() {
        logOn();
        startAndInit();
        m_path = placeClip();
        static_cast<void>(log().news());
    }
    const std::string& path() const { return m_path; }

    static void expectGoodFrame(simhost::Clip& clip, std::uint32_t index, std::uint32_t format = kYuy2) {
        const auto answer = clip.getFrame(index, format);
        EXPECT_EQ(answer.result, host::imNoErr);
        ASSERT_TRUE(answer.frame.has_value());
        if (format == kYuy2) {
            EXPECT_EQ(answer.frame->picture(), clips::yuy2Picture(index));
        }
    }

 private:
    std::string m_path;
};

// --- at imInit: the library only answers questions for the dump ---

TEST_F(CodecFailures, ALibraryThatDoesNotStartEndsTheDumpButNotThePlugin) {
    logOn();
    const CodecFaults faults("library_init:1,open:1,get_param:1,get_param:100=77");
    start();
    for (const char* end : {"Orvantis error (1900): injected fault: OrvantisCodec(): orvantis_library_init()",
                            "Orvantis error (1900): injected fault: OrvantisCodec(): orvantis_open()",
                            "Orvantis error (1900): injected fault: getParam(7,1)"}) {
        EXPECT_EQ(importer().init().result, host::imNoErr);
        setInitialised(true);
        const std::string text = log().news();
        EXPECT_TRUE(text.ends_with(std::string("\nFormat dump stopped: ") + end + "\n    [imNoErr] (0)\n"))
            << text;
    }
    // The listing stops in the middle of the types, of which each is asked for parameters 7 and 9.
    EXPECT_EQ(importer().init().result, host::imNoErr);
    EXPECT_TRUE(log().news().ends_with(
        "\nFormat dump stopped: Orvantis error (77): unknown error: getParam(7,50)\n    [imNoErr] (0)\n"));
    EXPECT_TRUE(host().events().empty());
}

// --- at imGetInfo8 ---

TEST_F(CodecFailures, ASessionThatCannotBeOpenedIsAnInternalError) {
    traceCodec();
    ready();
    simhost::Clip clip(importer(), path());
    for (const char* function : {"library_init", "open"}) {
        {
            const CodecFaults faults(std::string(function) + ":1");
            EXPECT_EQ(clip.getInfo(0).result, 99);
        }
        const std::string fatal = std::string("FATAL: Unhandled exception during [imGetInfo8] (37): ") +
                                  kInjected + "OrvantisCodec(): orvantis_" + function + "()";
        EXPECT_EQ(log().newLines().back(), fatal);
        EXPECT_EQ(host().events().back().description, fatal);
        EXPECT_EQ(clip.getInfo(0).result, host::imNoErr);
        expectGoodFrame(clip, 0);
    }
    // A library that was initialised but not opened gets no close of either kind: one stays.
    EXPECT_NE(codecTrace().find("open() = 1900\n"), std::string::npos);
    // TearDown would miss that one; the host ends its process with it.
    ASSERT_EQ(clip.close(), host::imNoErr);
    stop();
    EXPECT_TRUE(codecTrace().ends_with("library_init not undone: 1, sessions not closed: 0\n"))
        << codecTrace();
    forgetCodecTrace();
}

TEST_F(CodecFailures, AFailedDescriptionOfTheVideoIsABadFile) {
    traceCodec();
    ready();
    simhost::Clip clip(importer(), path());
    {
        const CodecFaults faults("decompress_query:1=1005");
        EXPECT_EQ(clip.getInfo(0).result, host::imBadFile);
    }
    EXPECT_TRUE(
        log().news().ends_with("\nDecompress query failed: Orvantis error (1005): invalid argument: "
                               "decompressQuery({<address>,40},null)\n"
                               "VideoInfo::~VideoInfo()\n"
                               "    [imBadFile] (2)\n"));
    EXPECT_EQ(clip.pixelFormat(0).result, 99);
    EXPECT_EQ(clip.getInfo(0).result, host::imNoErr);
    expectGoodFrame(clip, 1);
}

TEST_F(CodecFailures, AFormatThatTheLibraryRefusesIsNotOffered) {
    ready();
    simhost::Clip clip(importer(), path());
    const auto offered = [&clip] {
        std::string text;
        for (const std::uint32_t format : clip.pixelFormats().formats) {
            text += simhost::codeText(format, false) + " ";
        }
        return text;
    };
    {
        // The first question is for the video itself; then come the rows.
        const CodecFaults faults("decompress_query:2");
        EXPECT_EQ(clip.getInfo(0).result, host::imNoErr);
        EXPECT_EQ(offered(), "yuy3 uyvy uyv7 ");
    }
    {
        // None of the preferred four: all others that the library has.
        const CodecFaults faults(
            "decompress_query:2,decompress_query:3,decompress_query:4,decompress_query:5");
        EXPECT_EQ(clip.getInfo(0).result, host::imNoErr);
        std::string others;
        for (const std::string& code :
             formatlists::deliveredCodes({formatlists::Family::kYuv422, formatlists::Family::kRgb})) {
            if (std::string_view("yuy2 yuy3 uyvy uyv7").find(code) == std::string_view::npos) {
                others += code + " ";
            }
        }
        EXPECT_EQ(offered(), others);
    }
    EXPECT_EQ(clip.getInfo(0).result, host::imNoErr);
    EXPECT_EQ(offered(), "yuy2 yuy3 uyvy uyv7 ");
}

TEST_F(CodecFailures, AVideoThatNoFormatSuitsIsABadFile) {
    traceCodec();
    ready();
    simhost::Clip clip(importer(), path());
    std::string plan;
    const int rows = static_cast<int>(formatlists::deliveredFormats().size());
    for (int row = 2; row <= rows + 1; ++row) {
        plan += "decompress_query:" + std::to_string(row) + ",";
    }
    {
        const CodecFaults faults(plan);
        EXPECT_EQ(clip.getInfo(0).result, host::imBadFile);
    }
    EXPECT_TRUE(
        log().news().ends_with("\nDecode formats:\n"
                               "No formats to decode into: decodeFormats is empty\n"
                               "VideoInfo::~VideoInfo()\n"
                               "    [imBadFile] (2)\n"));
    EXPECT_EQ(clip.getInfo(0).result, host::imNoErr);
}

TEST_F(CodecFailures, TheSecondDescriptionMayFailToo) {
    traceCodec();
    ready();
    simhost::Clip clip(importer(), path());
    {
        // The one that ends the list of formats: behind the first description and one question a format.
        const CodecFaults faults("decompress_query:" +
                                 std::to_string(formatlists::deliveredFormats().size() + 2));
        EXPECT_EQ(clip.getInfo(0).result, host::imBadFile);
    }
    EXPECT_THAT(log().newLines(), Contains("Decompress query failed: " + std::string(kInjected) +
                                           "decompressQuery({<address>,40},null)"));
    EXPECT_EQ(clip.getInfo(0).result, host::imNoErr);
}

TEST_F(CodecFailures, ClosingThatFailsIsNobodysBusiness) {
    ready();
    simhost::Clip clip(importer(), path());
    {
        const CodecFaults faults("close:*,library_close:*");
        EXPECT_EQ(clip.getInfo(0).result, host::imNoErr);
        expectGoodFrame(clip, 0);
        EXPECT_EQ(clip.close(), host::imNoErr);
    }
    EXPECT_TRUE(host().events().empty());
    simhost::Clip next(importer(), path());
    EXPECT_EQ(next.getInfo(0).result, host::imNoErr);
}

TEST_F(CodecFailures, NamesThatAreMissingAreEmpty) {
    ready();
    simhost::Clip clip(importer(), path());
    const CodecFaults faults("get_string:*");
    EXPECT_EQ(clip.getInfo(0).result, host::imNoErr);
    EXPECT_THAT(log().newLines(), Contains("Compressed format info: 16 x 4,  (104),  (1), range: 1"));
    expectGoodFrame(clip, 0);
    EXPECT_THAT(log().newLines(), Contains("Starting decompression:  [] [LIMITED] ->  [] (pr: "
                                           "PrPixelFormat_YUYV_422_8u_601 [yuy2])"));
}

// --- at imGetSourceVideo ---

TEST_F(CodecFailures, ADecompressionThatDoesNotBeginIsTriedAgain) {
    traceCodec();
    ready();
    simhost::Clip clip(importer(), path());
    const CodecFaults faults("decompress_begin:1,decompress_begin:2");
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    for (int i = 0; i < 2; ++i) {
        static_cast<void>(log().news());
        EXPECT_EQ(clip.getFrame(0, kYuy2).result, host::imBadCompression);
        const std::vector<std::string> lines = log().newLines();
        ASSERT_GE(lines.size(), 3U);
        EXPECT_TRUE(lines[lines.size() - 3].starts_with("Starting decompression: "));
        EXPECT_EQ(lines[lines.size() - 2],
                  "Decompress begin failed: " + std::string(kInjected) +
                      "decompressBegin({<address>,40},{0,0,254,1,4 (YUYV),0,1 (Rec.601),1,0})");
        EXPECT_EQ(lines[lines.size() - 1], "    [imBadCompression] (8)");
    }
    EXPECT_EQ(host().calls(Service::kCreatePPix), 0U)
        << "no frame is made for a decompression that does not run";
    expectGoodFrame(clip, 0);
}

TEST_F(CodecFailures, AFrameThatCannotBeDecodedIsDisposedOfAndTheNextOneIsGood) {
    traceCodec();
    ready();
    simhost::Clip clip(importer(), path());
    const CodecFaults faults("decompress:1,decompress:3=1017");
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    EXPECT_EQ(clip.getFrame(0, kYuy2).result, host::imBadCompression);
    // 16 x 4 pixels of 2 bytes, and the simulated host's rows are padded to 48 bytes.
    EXPECT_TRUE(
        log().news().ends_with("\nDecompress failed: " + std::string(kInjected) +
                               "decompress({<address>,128},{<address>,192})\n    [imBadCompression] (8)\n"));
    EXPECT_EQ(host().calls(Service::kDisposePPix), 1U);
    EXPECT_EQ(host().balance().frames, 0U);
    expectGoodFrame(clip, 0);
    EXPECT_EQ(clip.getFrame(1, kYuy2).result, host::imBadCompression);
    EXPECT_EQ(host().calls(Service::kDisposePPix), 2U);
    expectGoodFrame(clip, 1);
    EXPECT_THAT(log().newLines(), testing::Not(Contains(testing::StartsWith("Starting decompression: "))))
        << "the decompression goes on";
}

TEST_F(CodecFailures, ADecompressionThatDoesNotEndIsGivenUp) {
    ready();
    simhost::Clip clip(importer(), path());
    {
        const CodecFaults faults("decompress_end:1");
        ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
        expectGoodFrame(clip, 0);
        static_cast<void>(log().news());
        // The library has not ended it, so it begins no other; the plug-in says both.
        EXPECT_EQ(clip.getFrame(0, kUyvy).result, host::imBadCompression);
    }
    const std::vector<std::string> lines = log().newLines();
    EXPECT_THAT(lines, Contains("Pixel format changed, ending decompression"));
    EXPECT_THAT(lines, Contains("Internal error: decompressEnd() failed: " + std::string(kInjected) +
                                "decompressEnd()"));
    EXPECT_THAT(lines, Contains(testing::StartsWith("Decompress begin failed: Orvantis error (1015): ")));
    EXPECT_EQ(lines.back(), "    [imBadCompression] (8)");
    // A new description brings a new session.
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    expectGoodFrame(clip, 0, kUyvy);
    expectGoodFrame(clip, 0);
}

TEST_F(CodecFailures, AFrameWithTooFewBytesIsRefusedByTheLibrary) {
    logOn();
    startAndInit();
    orvantis::test::AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O8Y2", 16, 4, 25, 1));
    avi.addFilledChunk(0, 127, 0).addChunk(0, clips::codedPicture(1));
    simhost::Clip clip(importer(), place(u8"clip.avi", avi.build()));
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    EXPECT_EQ(clip.getFrame(0, kYuy2).result, host::imBadCompression);
    EXPECT_THAT(log().newLines(),
                Contains(testing::StartsWith("Decompress failed: Orvantis error (1017): ")));
    expectGoodFrame(clip, 1);
}

// --- in the asynchronous importer ---

TEST_F(CodecFailures, AnAsynchronousImporterWithoutALibraryIsNotMade) {
    traceCodec();
    ready();
    simhost::Clip clip(importer(), path());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    {
        const CodecFaults faults("library_init:1");
        EXPECT_EQ(clip.createAsync().creation().result, 99);
    }
    {
        const CodecFaults faults("decompress_query:1");
        EXPECT_EQ(clip.createAsync().creation().result, host::imBadFile);
    }
    simhost::AsyncClip async = clip.createAsync();
    EXPECT_EQ(async.creation().result, host::imNoErr);
    expectGoodFrame(clip, 0);
}

TEST_F(CodecFailures, AnAsynchronousFrameThatCannotBeDecodedIsAnUnknownError) {
    traceCodec();
    ready();
    simhost::Clip clip(importer(), path());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    const CodecFaults faults("decompress:1,decompress_begin:2");
    simhost::AsyncClip async = clip.createAsync();
    ASSERT_EQ(async.creation().result, host::imNoErr);
    const host::imFrameFormat yuy2[] = {{0, 0, kYuy2}};
    const host::imFrameFormat uyvy[] = {{0, 0, kUyvy}};
    static_cast<void>(log().news());
    EXPECT_EQ(async.getFrame(0, yuy2).result, host::aiUnknownError);
    EXPECT_THAT(log().newLines(), Contains("    OnGetFrame: [aiUnknownError] (2), [imBadCompression] (8)"));
    EXPECT_EQ(host().balance().frames, 0U);
    EXPECT_TRUE(async.getFrame(0, yuy2).frame.has_value());
    EXPECT_EQ(async.getFrame(0, uyvy).result, host::aiUnknownError);
    const auto answer = async.getFrame(0, yuy2);
    ASSERT_TRUE(answer.frame.has_value());
    EXPECT_EQ(answer.frame->picture(), clips::yuy2Picture(0));
}

// --- every call of a session ---

TEST_F(CodecFailures, EachCallOfASessionMayFailAndTheNextSessionIsGood) {
    simhost::SessionOptions options;
    options.pathUtf8 = placeClip();
    options.framesPerFormat = 2;
    options.mostFormats = 2;
    options.audioFrames = 100;
    const std::string traceFile = orvantis::test::utf8Path(folder() / "calls.txt");
    const simhost::Plugin plugin(pluginPath(), codecFolder());

    const auto run = [&](const std::string& what) {
        simhost::Host host;
        auto summary = simhost::runSession(simhost::Importer(host, plugin), options);
        EXPECT_TRUE(host.isClean()) << what << "\n" << host.report() << summary.text();
        return summary;
    };
    // How often a session calls each function.
    simhost::SessionSummary reference;
    {
        const orvantis::test::ScopedEnvironment trace("ORVANTIS_STANDIN_LOG", traceFile);
        reference = run("the reference");
    }
    std::map<std::string, std::uint64_t> calls;
    const std::string trace = orvantis::test::readFile(folder() / "calls.txt");
    for (std::size_t at = 0; at < trace.size(); at = trace.find('\n', at) + 1) {
        // "#12 T1 decompress_query(...) = 0"
        const std::size_t name = trace.find(' ', trace.find(' ', at) + 1) + 1;
        ++calls[trace.substr(name, trace.find('(', name) - name)];
    }
    // Texts are asked for all over the dump; one failure is like another.
    calls.erase("get_string");
    ASSERT_EQ(calls.size(), 9U);

    for (const auto& [function, count] : calls) {
        for (std::uint64_t n = 1; n <= count; n = orvantis::test::nextSample(n, 4, 8)) {
            const std::string plan = function + ":" + std::to_string(n);
            {
                const CodecFaults faults(plan);
                static_cast<void>(run(plan));
            }
            // Failures without consequence need no second session.
            if (function == "get_param" && n % 20 != 0 && !orvantis::test::takesSample()) {
                continue;
            }
            const auto summary = run("behind " + plan);
            ASSERT_EQ(summary.text(), reference.text()) << plan;
            ASSERT_EQ(summary.pictureHash, reference.pictureHash) << plan;
            ASSERT_EQ(summary.audioHash, reference.audioHash) << plan;
            ASSERT_EQ(summary.asyncDifferences, 0U) << plan;
        }
    }
}

}  // namespace
