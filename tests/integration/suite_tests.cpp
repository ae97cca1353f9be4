// The host's suites as the host sees them: which are asked for when, in which order they come back, and what
// a refused one costs.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "host/four_char_codes.h"
#include "host/pixel_formats.h"
#include "host/result_codes.h"
#include "host/selectors.h"
#include "host/suites.h"
#include "tests/integration/plugin_clip_test.h"

namespace {

using simhost::Service;
using testing::Contains;
using testing::Pair;

// The order of acquisition, and its reverse, are part of what log readers rely on.
const std::vector<std::string> kFileSuites = {
    "Premiere PPix Creator Suite", "Premiere PPix Cache Suite",       "Premiere PPix Suite",
    "Premiere Time Suite",         "Premiere Image Processing Suite", "Premiere Audio Suite",
};

using clips::kYuy2;

class Suites : public ClipTest {
 protected:
    std::vector<std::string> namesOf(Service service) {
        std::vector<std::string> out;
        for (const simhost::ServiceCall& call : host().trace()) {
            if (call.service == service) {
                out.push_back(call.detail);
            }
        }
        return out;
    }
    std::ptrdiff_t acquisitions(const std::string& suite) {
        const auto names = namesOf(Service::kAcquireSuite);
        return std::count(names.begin(), names.end(), suite);
    }
    void refuse(const std::string& suite) { host().addFault(refuseAlways(suite)); }
    std::string lastEvent() {
        const auto events = host().events();
        return events.empty() ? std::string() : events.back().description;
    }
};

TEST_F(Suites, ADescribedFileHoldsSixAndTheProcessOne) {
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    EXPECT_THAT(host().balance().suites,
                testing::UnorderedElementsAre(
                    Pair("Premiere Error Suite 3", 1), Pair("Premiere PPix Creator Suite 1", 1),
                    Pair("Premiere PPix Cache Suite 6", 1), Pair("Premiere PPix Suite 1", 1),
                    Pair("Premiere Time Suite 1", 1), Pair("Premiere Image Processing Suite 2", 1),
                    Pair("Premiere Audio Suite 1", 1)));
}

TEST_F(Suites, AreAcquiredWhenTheFileIsDescribedAndReleasedBackwardsWhenItIsClosed) {
    startAndInit();
    host().clearTrace();
    simhost::Clip clip(importer(), placeClip());
    EXPECT_TRUE(namesOf(Service::kAcquireSuite).empty()) << "opening needs none";
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    EXPECT_EQ(namesOf(Service::kAcquireSuite), kFileSuites);
    ASSERT_EQ(clip.close(), host::imNoErr);
    const std::vector<std::string> backwards(kFileSuites.rbegin(), kFileSuites.rend());
    EXPECT_EQ(namesOf(Service::kReleaseSuite), backwards);
    EXPECT_EQ(namesOf(Service::kAcquireSuite), kFileSuites);
}

TEST_F(Suites, AreTakenOncePerFileWhateverIsAskedOfIt) {
    startAndInit();
    host().clearTrace();
    simhost::Clip clip(importer(), placeClip());
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    }
    EXPECT_TRUE(clip.getFrame(0, kYuy2).frame.has_value());
    EXPECT_EQ(clip.importAudio(0, 100, 2).result, host::imNoErr);
    ASSERT_EQ(clip.quiet(), host::imNoErr);
    EXPECT_TRUE(namesOf(Service::kReleaseSuite).empty()) << "a quiet file keeps its suites";
    ASSERT_EQ(clip.reopen().result, host::imNoErr);
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    EXPECT_EQ(namesOf(Service::kAcquireSuite), kFileSuites);
}

TEST_F(Suites, EachFileAndEachAsynchronousImporterHasItsOwn) {
    startAndInit();
    const std::string path = placeClip();
    simhost::Clip first(importer(), path);
    simhost::Clip second(importer(), path);
    ASSERT_EQ(first.getInfo(0).result, host::imNoErr);
    ASSERT_EQ(second.getInfo(0).result, host::imNoErr);
    simhost::AsyncClip async = first.createAsync();
    ASSERT_EQ(async.creation().result, host::imNoErr);
    for (const auto& [suite, count] : host().balance().suites) {
        EXPECT_EQ(count, suite == "Premiere Error Suite 3" ? 1 : 3) << suite;
    }
    ASSERT_EQ(first.close(), host::imNoErr);
    EXPECT_THAT(host().balance().suites, Contains(Pair("Premiere Time Suite 1", 2)));
}

TEST_F(Suites, AFileThatWasOnlyOpenedReleasesNothing) {
    startAndInit();
    host().clearTrace();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.close(), host::imNoErr);
    EXPECT_TRUE(host().trace().empty() || namesOf(Service::kReleaseSuite).empty());
    EXPECT_TRUE(namesOf(Service::kAcquireSuite).empty());
}

TEST_F(Suites, AreHeldForAnAudioStreamToo) {
    startAndInit();
    host().clearTrace();
    simhost::Clip clip(importer(), placeClip({.audioStreams = 2}), {.streamIndex = 1});
    ASSERT_EQ(clip.getInfo(1).result, host::imBadStreamIndex);
    EXPECT_EQ(namesOf(Service::kAcquireSuite), kFileSuites);
}

// --- a refused suite ---

struct Refusal {
    const char* suite;
    std::int32_t info;   // imGetInfo8
    std::int32_t frame;  // imGetSourceVideo
    std::int32_t audio;  // imImportAudio7 of integer samples
    const char* text;    // of the exception; null without one
};

// What each suite is good for: who needs it fails, and nobody else.
const Refusal kRefusals[] = {
    {"Premiere PPix Creator Suite", 0, 99, 0,
     "Could not acquire suite: 'Premiere PPix Creator Suite', ver: 1"},
    {"Premiere PPix Cache Suite", 0, 0, 0, nullptr},
    {"Premiere PPix Suite", 0, 99, 0, "Could not acquire suite: 'Premiere PPix Suite', ver: 1"},
    {"Premiere Time Suite", 99, 99, 99, "Could not acquire suite: 'Premiere Time Suite', ver: 1"},
    {"Premiere Image Processing Suite", 0, 0, 0, nullptr},
    {"Premiere Audio Suite", 0, 0, 99, "Could not acquire suite: 'Premiere Audio Suite', ver: 1"},
};

class RefusedSuite : public Suites, public testing::WithParamInterface<Refusal> {};
// Those that somebody uses.
class NeededSuite : public RefusedSuite {};

std::string nameOf(const testing::TestParamInfo<Refusal>& refusal) {
    std::string name = refusal.param.suite;
    std::erase(name, ' ');
    return name;
}

TEST_P(RefusedSuite, CostsOnlyWhatNeedsItAndComesBackWhenTheHostHasIt) {
    const Refusal& refusal = GetParam();
    startAndInit();
    const std::string path = placeClip();
    refuse(refusal.suite);
    simhost::Clip clip(importer(), path);
    ASSERT_EQ(clip.openResult(), host::imNoErr);
    EXPECT_EQ(clip.getInfo(0).result, refusal.info);
    const host::imFrameFormat formats[] = {{0, 0, kYuy2}};
    EXPECT_EQ(clip.getSourceVideo(0, formats).result, refusal.frame);
    EXPECT_EQ(clip.importAudio(0, 100, 2).result, refusal.audio);
    if (refusal.text == nullptr) {
        EXPECT_TRUE(host().events().empty());
    } else if (refusal.info == 0) {
        EXPECT_TRUE(lastEvent().ends_with(refusal.text)) << lastEvent();
    } else {
        EXPECT_TRUE(host().events().front().description.ends_with(refusal.text)) << lastEvent();
    }
    EXPECT_EQ(host().balance().frames, 0U);

    // The same clip, once the host has changed its mind.
    host().clearFaults();
    EXPECT_EQ(clip.getInfo(0).result, host::imNoErr);
    const auto frame = clip.getSourceVideo(0, formats);
    ASSERT_TRUE(frame.frame.has_value());
    EXPECT_EQ(frame.frame->picture(), clips::yuy2Picture(0));
    EXPECT_EQ(clip.importAudio(0, 100, 2).result, host::imNoErr);
}

TEST_P(NeededSuite, IsAskedForOnceMoreByTheFirstUseAndByEachFurtherOne) {
    const Refusal& refusal = GetParam();
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    host().clearTrace();
    refuse(refusal.suite);
    static_cast<void>(clip.getInfo(0));
    // Once with the others; the time suite is used by the description itself.
    EXPECT_EQ(acquisitions(refusal.suite), refusal.info == 99 ? 2 : 1);
    for (int use = 1; use <= 2; ++use) {
        const std::ptrdiff_t before = acquisitions(refusal.suite);
        std::int32_t result = 0;
        if (refusal.info == 99) {
            result = clip.getInfo(0).result;
        } else if (refusal.frame == 99) {
            result = clip.getFrame(0, kYuy2).result;
        } else {
            result = clip.importAudio(0, 100, 2).result;
        }
        EXPECT_EQ(result, 99);
        EXPECT_EQ(acquisitions(refusal.suite), before + 1);
    }
}

TEST_P(RefusedSuite, ThatIsAcceptedAtItsFirstUseIsNotMissed) {
    const Refusal& refusal = GetParam();
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    // Only the first request is refused.
    host().addFault(refuseOnce(refusal.suite));
    EXPECT_EQ(clip.getInfo(0).result, host::imNoErr);
    EXPECT_TRUE(clip.getFrame(0, kYuy2).frame.has_value());
    EXPECT_EQ(clip.importAudio(0, 100, 2).result, host::imNoErr);
    EXPECT_EQ(host().injectedFaults(), 1U);
    EXPECT_TRUE(host().events().empty());
}

TEST_P(RefusedSuite, IsLoggedAndReleasedByNobody) {
    const Refusal& refusal = GetParam();
    logOn();
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    static_cast<void>(log().news());
    refuse(refusal.suite);
    static_cast<void>(clip.getInfo(0));
    const std::vector<std::string> lines = log().newLines();
    std::vector<std::string> acquired;
    for (const std::string& line : lines) {
        if (line.starts_with("Acquiring suite: ")) {
            acquired.push_back(line);
        }
    }
    ASSERT_GE(acquired.size(), 6U);
    for (std::size_t i = 0; i < 6; ++i) {
        const bool refused = kFileSuites[i] == refusal.suite;
        EXPECT_TRUE(acquired[i].find("n: '" + kFileSuites[i] + "'") != std::string::npos) << acquired[i];
        EXPECT_TRUE(acquired[i].starts_with(refused ? "Acquiring suite: r: -2147483648, v: "
                                                    : "Acquiring suite: r: 0, v: "))
            << acquired[i];
        EXPECT_TRUE(acquired[i].ends_with(refused ? ", ptr: <null>" : ", ptr: <address>")) << acquired[i];
    }
    host().clearTrace();
    ASSERT_EQ(clip.close(), host::imNoErr);
    EXPECT_THAT(namesOf(Service::kReleaseSuite), testing::Not(Contains(std::string(refusal.suite))));
    EXPECT_EQ(namesOf(Service::kReleaseSuite).size(), 5U);
}

INSTANTIATE_TEST_SUITE_P(OfAFile, RefusedSuite, testing::ValuesIn(kRefusals), nameOf);
INSTANTIATE_TEST_SUITE_P(OfAFile, NeededSuite,
                         testing::Values(kRefusals[0], kRefusals[2], kRefusals[3], kRefusals[5]), nameOf);

TEST_F(Suites, TheTimeSuiteIsMissedInTheMiddleOfTheDescription) {
    logOn();
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    static_cast<void>(log().news());
    refuse("Premiere Time Suite");
    EXPECT_EQ(clip.getInfo(0).result, 99);
    EXPECT_EQ(log().newsBehind("fileInfoRec8P->streamIdx: 0"), R"(
VideoInfo::VideoInfo()
Acquiring suite: r: 0, v: 1, n: 'Premiere PPix Creator Suite', ptr: <address>
Acquiring suite: r: 0, v: 6, n: 'Premiere PPix Cache Suite', ptr: <address>
Acquiring suite: r: 0, v: 1, n: 'Premiere PPix Suite', ptr: <address>
Acquiring suite: r: -2147483648, v: 1, n: 'Premiere Time Suite', ptr: <null>
Acquiring suite: r: 0, v: 2, n: 'Premiere Image Processing Suite', ptr: <address>
Acquiring suite: r: 0, v: 1, n: 'Premiere Audio Suite', ptr: <address>
Acquiring suite: r: -2147483648, v: 1, n: 'Premiere Time Suite', ptr: <null>
FATAL: Unhandled exception during [imGetInfo8] (37): Could not acquire suite: 'Premiere Time Suite', ver: 1
)");
}

TEST_F(Suites, SuccessWithoutATableIsARefusal) {
    logOn();
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    static_cast<void>(log().news());
    host().clearTrace();
    // The host says yes and leaves the pointer unwritten.
    simhost::FaultPlan emptySuccess = refuseAlways("Premiere Time Suite");
    emptySuccess.result = 0;
    host().addFault(emptySuccess);
    EXPECT_EQ(clip.getInfo(0).result, 99);
    EXPECT_THAT(log().newLines(),
                Contains("Acquiring suite: r: 0, v: 1, n: 'Premiere Time Suite', ptr: <null>").Times(2));
    ASSERT_EQ(clip.close(), host::imNoErr);
    EXPECT_THAT(namesOf(Service::kReleaseSuite), testing::Not(Contains("Premiere Time Suite")));
}

TEST_F(Suites, ARefusalThatWritesNullIsTheSame) {
    simhost::HostProfile profile = *simhost::findProfile("no-time-suite");
    profile.refusalWritesNull = true;
    startAndInit(profile);
    simhost::Clip clip(importer(), placeClip());
    EXPECT_EQ(clip.getInfo(0).result, 99);
    EXPECT_TRUE(lastEvent().ends_with("Could not acquire suite: 'Premiere Time Suite', ver: 1"));
}

TEST_F(Suites, AReleaseThatFailsIsLoggedAndNotTriedAgain) {
    logOn();
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    static_cast<void>(log().news());
    host().clearTrace();
    simhost::FaultPlan failure = failOnce(Service::kReleaseSuite, 1, 7);
    failure.detail = "Premiere Time Suite";
    host().addFault(failure);
    ASSERT_EQ(clip.close(), host::imNoErr);
    EXPECT_THAT(log().newLines(), Contains("Releasing suite: r: 7, v: 1, n: 'Premiere Time Suite'"));
    EXPECT_EQ(namesOf(Service::kReleaseSuite).size(), 6U);
}

// --- at imInit ---

TEST_F(Suites, TheImageProcessingSuiteIsNeededForTheTables) {
    start();
    refuse("Premiere Image Processing Suite");
    EXPECT_EQ(importer().init().result, 99);
    setInitialised(true);
    EXPECT_EQ(
        lastEvent(),
        "FATAL: Unhandled exception during [imInit] (0): Could not acquire suite: 'Premiere Image Processing "
        "Suite', ver: 2");
    EXPECT_EQ(acquisitions("Premiere Image Processing Suite"), 2) << "the accessor tries once more";
    // A host that tries again gets a working plug-in.
    host().clearFaults();
    EXPECT_EQ(importer().init().result, host::imNoErr);
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    const auto answer = clip.getFrame(1, kYuy2);
    ASSERT_TRUE(answer.frame.has_value());
    EXPECT_EQ(answer.frame->picture(), clips::yuy2Picture(1));
}

TEST_F(Suites, OneRefusalOfTheImageProcessingSuiteDoesNotFailTheStart) {
    // The first one meets the tables, the second the listing of them.
    for (const std::uint64_t nth : {1U, 2U}) {
        start();
        host().addFault(refuseOnce("Premiere Image Processing Suite", nth));
        EXPECT_EQ(importer().init().result, host::imNoErr) << nth;
        setInitialised(true);
        EXPECT_TRUE(host().events().empty()) << lastEvent();
        EXPECT_EQ(acquisitions("Premiere Image Processing Suite"), 3);
        stop();
        restart();
    }
}

TEST_F(Suites, TheImageProcessingSuiteIsNotNeededForTheListing) {
    logOn();
    start();
    simhost::FaultPlan refusal = refuseOnce("Premiere Image Processing Suite", 2);
    refusal.fromThenOn = true;
    host().addFault(refusal);
    EXPECT_EQ(importer().init().result, host::imNoErr);
    setInitialised(true);
    EXPECT_TRUE(host().events().empty()) << lastEvent();
    EXPECT_THAT(log().newLines(),
                Contains("Format dump stopped: Could not acquire suite: 'Premiere Image Processing Suite', "
                         "ver: 2"));
}

TEST_F(Suites, ARefusedErrorSuiteDoesNotKeepThePluginFromStarting) {
    startAndInit(*simhost::findProfile("no-error-suite"));
    simhost::Clip clip(importer(), placeClip());
    EXPECT_EQ(clip.getInfo(0).result, host::imNoErr);
    EXPECT_TRUE(clip.getFrame(0, kYuy2).frame.has_value());
}

TEST_F(Suites, AHostWithoutABasicSuiteIsToldThatItsSuitesAreMissing) {
    logOn();
    start();
    host().addFault(failAlways(Service::kGetSPBasicSuite));
    EXPECT_EQ(importer().init().result, 99);
    setInitialised(true);
    EXPECT_THAT(
        log().newLines(),
        Contains("FATAL: Unhandled exception during [imInit] (0): Could not acquire suite: 'Premiere Image "
                 "Processing Suite', ver: 2"));
    simhost::Clip clip(importer(), placeClip());
    EXPECT_EQ(clip.openResult(), host::imNoErr);
    EXPECT_EQ(clip.getInfo(0).result, 99);
    EXPECT_EQ(host().calls(Service::kAcquireSuite), 0U);
}

// --- asynchronous importers ---

TEST_F(Suites, AnAsynchronousImporterWithoutTheTimeSuiteIsNotMade) {
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    refuse("Premiere Time Suite");
    {
        simhost::AsyncClip async = clip.createAsync();
        EXPECT_EQ(async.creation().result, 99);
        EXPECT_FALSE(async.isOpen());
        EXPECT_EQ(simhost::byValue(async.creation().record.outAsyncEntry), nullptr);
    }
    EXPECT_THAT(host().balance().suites, Contains(Pair("Premiere Audio Suite 1", 1)))
        << "only the clip's own";
    host().clearFaults();
    simhost::AsyncClip async = clip.createAsync();
    EXPECT_EQ(async.creation().result, host::imNoErr);
}

TEST_F(Suites, AnAsynchronousImporterOfASoundStreamHoldsThemToo) {
    logOn();
    startAndInit();
    simhost::Clip clip(importer(), placeClip({.audioStreams = 2}), {.streamIndex = 1});
    ASSERT_EQ(clip.openResult(), host::imNoErr);
    host().clearTrace();
    simhost::AsyncClip async = clip.createAsync();
    EXPECT_EQ(async.creation().result, host::imNoErr) << "the stream index that ends the list is no failure";
    EXPECT_EQ(namesOf(Service::kAcquireSuite), kFileSuites);
    // Without video there are no frames to ask for.
    static_cast<void>(log().news());
    const host::imFrameFormat formats[] = {{0, 0, kYuy2}};
    EXPECT_EQ(async.initiate(0, formats), 99);
    EXPECT_EQ(async.getFrame(0, formats).result, 99);
    EXPECT_EQ(async.flush(), 99);
    EXPECT_EQ(log().news(), R"(
----------------------
[OnInitiateAsyncRead]
xAsyncImportEntry: FATAL: Unhandled exception during aiInitiateAsyncRead (0): m_videoInfo is NULL
----------------------
[OnGetFrame]
xAsyncImportEntry: FATAL: Unhandled exception during aiGetFrame (3): m_videoInfo is NULL
----------------------
[OnFlush]
xAsyncImportEntry: FATAL: Unhandled exception during aiFlush (2): m_videoInfo is NULL
)");
    EXPECT_EQ(async.close(), host::aiNoError);
}

TEST_F(Suites, AnAsynchronousRequestWithoutThePPixSuiteIsNotTaken) {
    logOn();
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    refuse("Premiere PPix Suite");
    simhost::AsyncClip async = clip.createAsync();
    ASSERT_EQ(async.creation().result, host::imNoErr);
    static_cast<void>(log().news());
    const host::imFrameFormat formats[] = {{0, 0, kYuy2}};
    EXPECT_EQ(async.initiate(0, formats), 99);
    EXPECT_EQ(async.getFrame(0, formats).result, 99);
    EXPECT_EQ(log().news(), R"(
----------------------
[OnInitiateAsyncRead]
REQUEST: Adding: 0, frameTime: 0
Acquiring suite: r: -2147483648, v: 1, n: 'Premiere PPix Suite', ptr: <null>
xAsyncImportEntry: FATAL: Unhandled exception during aiInitiateAsyncRead (0): Could not acquire suite: 'Premiere PPix Suite', ver: 1
----------------------
[OnGetFrame]
REQUEST: Requesting: 0, frameTime: 0
REQUEST: ERROR: Frame not found: 0, frameTime: 0
Acquiring suite: r: -2147483648, v: 1, n: 'Premiere PPix Suite', ptr: <null>
xAsyncImportEntry: FATAL: Unhandled exception during aiGetFrame (3): Could not acquire suite: 'Premiere PPix Suite', ver: 1
)");
    host().clearFaults();
    EXPECT_EQ(async.initiate(0, formats), host::aiNoError);
    EXPECT_TRUE(async.getFrame(0, formats).frame.has_value());
}

TEST_F(Suites, ATaskWithoutTheCreatorSuiteEndsInTheCallThatWaitsForIt) {
    logOn();
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    refuse("Premiere PPix Creator Suite");
    simhost::AsyncClip async = clip.createAsync();
    ASSERT_EQ(async.creation().result, host::imNoErr);
    const host::imFrameFormat formats[] = {{0, 0, kYuy2}};
    // Nothing is read of the log while the task may be in the middle of a line.
    static_cast<void>(log().news());
    EXPECT_EQ(async.initiate(0, formats), host::aiNoError);
    EXPECT_EQ(async.getFrame(0, formats).result, 99);
    EXPECT_THAT(
        log().newLines(),
        Contains("xAsyncImportEntry: FATAL: Unhandled exception during aiGetFrame (3): Could not acquire "
                 "suite: 'Premiere PPix Creator Suite', ver: 1"));
    host().clearFaults();
    const auto answer = async.getFrame(0, formats);
    ASSERT_TRUE(answer.frame.has_value());
    EXPECT_EQ(answer.frame->picture(), clips::yuy2Picture(0));
}

}  // namespace
