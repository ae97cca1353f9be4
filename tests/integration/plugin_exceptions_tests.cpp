// Exceptions that no handler answers: the entry guard logs the FATAL line, tells the user through the error
// suite, and answers 99. No result line follows.
#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <vector>

#include "host/four_char_codes.h"
#include "host/pixel_formats.h"
#include "host/result_codes.h"
#include "host/selectors.h"
#include "host/suites.h"
#include "tests/integration/plugin_clip_test.h"
#include "tests/integration/plugin_records.h"

namespace {

using simhost::Service;

constexpr const char* kTitle = "OrvantisImporter: Internal error";
constexpr std::uint32_t kErrorEvent = 3;

class PluginExceptions : public ClipTest {
 protected:
    /// The one event so far is an error with this description.
    void expectOneEvent(const std::string& description) {
        const std::vector<simhost::HostEvent> events = host().events();
        ASSERT_EQ(events.size(), 1U);
        EXPECT_EQ(events[0].type, kErrorEvent);
        EXPECT_EQ(events[0].title, kTitle);
        EXPECT_EQ(events[0].description, description);
    }
};

// A clip that is open but was never described has neither analysis: each selector that needs one says so.
struct Undescribed {
    const char* selector;  // as the log names it, with its number
    const char* missing;
    std::function<std::int32_t(simhost::Clip&)> call;
};

std::int32_t askForFrame(const simhost::Clip& clip) {
    const host::imFrameFormat any[] = {{0, 0, host::PrPixelFormat_BGRA_4444_8u}};
    return clip.getSourceVideo(0, any).result;
}

const std::vector<Undescribed>& undescribedCalls() {
    static const std::vector<Undescribed> calls = {
        {"[imAnalysis] (12)", "m_videoInfo is NULL",
         [](simhost::Clip& clip) { return clip.analysis(100).result; }},
        {"[imDataRateAnalysis] (13)", "m_videoInfo is NULL",
         [](simhost::Clip& clip) { return clip.dataRates().sizingResult; }},
        {"[imDataRateAnalysis] (13)", "m_videoInfo is NULL",
         [](simhost::Clip& clip) { return clip.dataRates(80).result; }},
        {"[imGetIndPixelFormat] (27)", "m_videoInfo is NULL",
         [](simhost::Clip& clip) { return clip.pixelFormat(0).result; }},
        {"[imGetSourceVideo] (47)", "m_videoInfo is NULL",
         [](simhost::Clip& clip) { return askForFrame(clip); }},
        {"[imImportAudio7] (25)", "m_audioInfo is NULL",
         [](simhost::Clip& clip) { return clip.importAudio(0, 10, 2).result; }},
        {"[imGetAudioChannelLayout] (64)", "m_audioInfo is NULL",
         [](simhost::Clip& clip) { return clip.channelLayout().result; }},
    };
    return calls;
}

// What an exception says may hold anything, also what printf would read arguments for.
TEST_F(PluginExceptions, PercentSignsOfATextAreWrittenAsTheyAre) {
    logOn();
    startAndInit();
    describeClip();
    const host::imFrameFormat unknown[] = {{0, 0, 0x6E257325}};
    EXPECT_EQ(clip().getSourceVideo(0, unknown).result, 99);
    EXPECT_TRUE(log().news().ends_with(" [%s%n]\n")) << "the fatal line";
}

class UndescribedClip : public PluginExceptions, public testing::WithParamInterface<std::size_t> {};

TEST_P(UndescribedClip, AnswersNinetyNineAndPostsOneEventWithTheFatalLine) {
    const Undescribed& call = undescribedCalls()[GetParam()];
    logOn();
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.openResult(), host::imNoErr);
    static_cast<void>(log().news());

    EXPECT_EQ(call.call(clip), 99);

    const std::string fatal =
        std::string("FATAL: Unhandled exception during ") + call.selector + ": " + call.missing;
    expectOneEvent(fatal);
    const std::vector<std::string> lines = log().newLines();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back(), fatal);
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                            [](const std::string& line) { return line.starts_with("    ["); }),
              0);

    // The clip is as good as before.
    EXPECT_EQ(clip.getInfo(0).result, host::imNoErr);
    EXPECT_NE(call.call(clip), 99);
    EXPECT_EQ(host().events().size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(Selectors, UndescribedClip,
                         testing::Range(std::size_t{0}, undescribedCalls().size()));

TEST_F(PluginExceptions, TheWholeLogOfOne) {
    logOn();
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    static_cast<void>(log().news());
    EXPECT_EQ(clip.pixelFormat(0).result, 99);
    const std::vector<std::string> lines = log().newLines();
    ASSERT_EQ(lines.size(), 5U) << "two of the selector, two of the file, and the last one";
    EXPECT_EQ(lines[0], "----------------------");
    EXPECT_EQ(lines[1], "[imGetIndPixelFormat] (27)");
    EXPECT_EQ(lines[4], "FATAL: Unhandled exception during [imGetIndPixelFormat] (27): m_videoInfo is NULL");
}

TEST_F(PluginExceptions, BeforeInitOnlyTheLineIsWritten) {
    logOn();
    start();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.openResult(), host::imNoErr);
    static_cast<void>(log().news());
    EXPECT_EQ(clip.pixelFormat(0).result, 99);
    EXPECT_TRUE(log().news().ends_with(
        "\nFATAL: Unhandled exception during [imGetIndPixelFormat] (27): m_videoInfo is NULL\n"));
    EXPECT_TRUE(host().events().empty());
    EXPECT_EQ(host().calls(Service::kAcquireSuite), 0U);
}

TEST_F(PluginExceptions, AfterShutdownOnlyTheLineIsWritten) {
    logOn();
    startAndInit();
    ASSERT_EQ(importer().shutdown(), host::imNoErr);
    setInitialised(false);
    simhost::Clip clip(importer(), placeClip());
    host().clearTrace();
    EXPECT_EQ(clip.pixelFormat(0).result, 99);
    EXPECT_TRUE(host().trace().empty());
    EXPECT_TRUE(log().news().ends_with("[imGetIndPixelFormat] (27): m_videoInfo is NULL\n"));
}

TEST_F(PluginExceptions, AnErrorSuiteThatWasRefusedAtInitIsAskedForAgainWhenItIsNeeded) {
    logOn();
    start();
    host().addFault(refuseOnce(host::kErrorSuiteName));
    ASSERT_EQ(importer().init().result, host::imNoErr);
    setInitialised(true);
    EXPECT_THAT(
        log().newLines(),
        testing::Contains("Acquiring suite: r: -2147483648, v: 3, n: 'Premiere Error Suite', ptr: <null>"));
    simhost::Clip clip(importer(), placeClip());
    static_cast<void>(log().news());

    EXPECT_EQ(clip.pixelFormat(0).result, 99);
    expectOneEvent("FATAL: Unhandled exception during [imGetIndPixelFormat] (27): m_videoInfo is NULL");
    EXPECT_TRUE(
        log().news().ends_with("m_videoInfo is NULL\n"
                               "Acquiring suite: r: 0, v: 3, n: 'Premiere Error Suite', ptr: <address>\n"));
    // From now on it is held, and shutdown gives it back.
    EXPECT_EQ(clip.pixelFormat(0).result, 99);
    EXPECT_TRUE(log().news().ends_with("m_videoInfo is NULL\n"));
    EXPECT_EQ(host().events().size(), 2U);
}

TEST_F(PluginExceptions, AnErrorSuiteThatStaysRefusedCostsTheEventButNotTheAnswer) {
    logOn();
    start(*simhost::findProfile("no-error-suite"));
    ASSERT_EQ(importer().init().result, host::imNoErr);
    setInitialised(true);
    simhost::Clip clip(importer(), placeClip());
    static_cast<void>(log().news());
    EXPECT_EQ(clip.pixelFormat(0).result, 99);
    EXPECT_TRUE(host().events().empty());
    EXPECT_TRUE(log().news().ends_with(
        "FATAL: Unhandled exception during [imGetIndPixelFormat] (27): m_videoInfo is NULL\n"
        "Acquiring suite: r: -2147483648, v: 3, n: 'Premiere Error Suite', ptr: <null>\n"));
    EXPECT_EQ(clip.getInfo(0).result, host::imNoErr);
}

TEST_F(PluginExceptions, AnErrorSuiteThatFailsChangesNothing) {
    startAndInit();
    host().addFault(failOnce(Service::kSetEventString));
    simhost::Clip clip(importer(), placeClip());
    EXPECT_EQ(clip.pixelFormat(0).result, 99);
    EXPECT_EQ(host().calls(Service::kSetEventString), 1U);
    EXPECT_TRUE(host().events().empty());
    EXPECT_EQ(clip.pixelFormat(0).result, 99);
    EXPECT_EQ(host().events().size(), 1U);
}

TEST_F(PluginExceptions, AnInitThatFailsIsTold) {
    logOn();
    start(*simhost::findProfile("no-image-suite"));
    importer().setRecordFill(0xA7);
    const auto answer = importer().init();
    setInitialised(true);
    EXPECT_EQ(answer.result, 99);
    EXPECT_TRUE(wroteExactly(answer, {}));
    expectOneEvent(
        "FATAL: Unhandled exception during [imInit] (0): Could not acquire suite: 'Premiere Image Processing "
        "Suite', "
        "ver: 2");
    EXPECT_EQ(log().news(), R"(
Log opened
Application: <host>
----------------------
[imInit] (0)
Acquiring suite: r: 0, v: 3, n: 'Premiere Error Suite', ptr: <address>
Acquiring suite: r: -2147483648, v: 2, n: 'Premiere Image Processing Suite', ptr: <null>
Acquiring suite: r: -2147483648, v: 2, n: 'Premiere Image Processing Suite', ptr: <null>
FATAL: Unhandled exception during [imInit] (0): Could not acquire suite: 'Premiere Image Processing Suite', ver: 2
)");
}

TEST_F(PluginExceptions, AFormatThatNobodyOfferedIsNamed) {
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    EXPECT_EQ(clip.getFrame(0, host::PrPixelFormat_BGRA_4444_32f).result, 99);
    expectOneEvent(
        "FATAL: Unhandled exception during [imGetSourceVideo] (47): GetFormatInfo_by_pixelFormat(): pixel "
        "format not "
        "found: PrPixelFormat_BGRA_4444_32f [BGra]");
}

TEST_F(PluginExceptions, ACodecLibraryThatDoesNotStartIsQuoted) {
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    {
        const CodecFaults faults("library_init:1=1023");
        EXPECT_EQ(clip.getInfo(0).result, 99);
    }
    expectOneEvent(
        "FATAL: Unhandled exception during [imGetInfo8] (37): Orvantis error (1023): out of memory: "
        "OrvantisCodec(): "
        "orvantis_library_init()");
    EXPECT_EQ(clip.getInfo(0).result, host::imNoErr);
}

}  // namespace
