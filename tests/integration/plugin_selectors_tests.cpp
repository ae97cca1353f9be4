// The selectors that concern the plug-in as a whole, through the loaded module: results, records byte by
// byte, and what they ask of the host.
#include <gmock/gmock.h>

#include <cstring>
#include <string>
#include <vector>

#include "host/four_char_codes.h"
#include "host/result_codes.h"
#include "host/selectors.h"
#include "host/suites.h"
#include "tests/integration/plugin_clip_test.h"
#include "tests/integration/plugin_records.h"
#include "tests/support/format_lists.h"

namespace {

using simhost::Service;
using testing::ElementsAre;

const std::size_t kSubTypes = formatlists::codedTypes().size();

using clips::kPattern;

class PluginSelectors : public ClipTest {
 protected:
    /// The suite calls so far: "+ name" acquired, "- name" released, with a "!" behind it when the host
    /// refused.
    std::vector<std::string> suiteCalls() {
        std::vector<std::string> out;
        for (const simhost::ServiceCall& call : host().trace()) {
            if (call.service != Service::kAcquireSuite && call.service != Service::kReleaseSuite) {
                continue;
            }
            out.push_back((call.service == Service::kAcquireSuite ? "+ " : "- ") + call.detail +
                          (call.result == 0 ? "" : "!"));
        }
        return out;
    }
};

TEST_F(PluginSelectors, InitSetsPriorityAndAudioConformAndNothingElse) {
    start();
    importer().setRecordFill(kPattern);
    const auto answer = importer().init();
    setInitialised(true);
    EXPECT_EQ(answer.result, host::imNoErr);
    EXPECT_TRUE(wroteExactly(answer, {number32(52, 200, "priority"), number32(72, 1, "avoidAudioConform")}));
}

TEST_F(PluginSelectors, InitHoldsTheErrorSuiteAndShutdownGivesItBack) {
    start();
    ASSERT_EQ(importer().init().result, host::imNoErr);
    // The image processing suite is asked for the origins of the formats, then again for the dump.
    EXPECT_THAT(suiteCalls(),
                ElementsAre("+ Premiere Error Suite", "+ Premiere Image Processing Suite",
                            "- Premiere Image Processing Suite", "+ Premiere Image Processing Suite",
                            "- Premiere Image Processing Suite"));
    EXPECT_THAT(host().balance().suites,
                ElementsAre(std::pair<const std::string, std::int64_t>("Premiere Error Suite 3", 1)));
    host().clearTrace();
    EXPECT_EQ(importer().shutdown(), host::imNoErr);
    EXPECT_THAT(suiteCalls(), ElementsAre("- Premiere Error Suite"));
    EXPECT_TRUE(host().balance().isBalanced());
}

TEST_F(PluginSelectors, ASecondShutdownGivesNothingBackAgain) {
    start();
    ASSERT_EQ(importer().init().result, host::imNoErr);
    EXPECT_EQ(importer().shutdown(), host::imNoErr);
    host().clearTrace();
    EXPECT_EQ(importer().shutdown(), host::imNoErr);
    EXPECT_THAT(suiteCalls(), ElementsAre());
    EXPECT_TRUE(host().balance().isBalanced());
}

TEST_F(PluginSelectors, InitAsksTheHostTheSameWhetherTheLogIsOnOrOff) {
    start();
    ASSERT_EQ(importer().init().result, host::imNoErr);
    ASSERT_EQ(importer().shutdown(), host::imNoErr);
    // The delivered formats are asked for their origin, then all formats for three things each.
    const std::size_t all = formatlists::hostFormats().size();
    EXPECT_EQ(host().calls(Service::kFormatIsOriginTopLeft), formatlists::deliveredFormats().size() + all);
    EXPECT_EQ(host().calls(Service::kFormatIsCompressed), all);
    EXPECT_EQ(host().calls(Service::kFormatHasAlpha), all);
}

TEST_F(PluginSelectors, SecondInitAcquiresTheErrorSuiteAnewAndThenReleasesTheFirst) {
    logOn();
    start();
    ASSERT_EQ(importer().init().result, host::imNoErr);
    setInitialised(true);
    host().clearTrace();
    static_cast<void>(log().news());
    ASSERT_EQ(importer().init().result, host::imNoErr);
    EXPECT_THAT(suiteCalls(),
                ElementsAre("+ Premiere Error Suite", "- Premiere Error Suite",
                            "+ Premiere Image Processing Suite", "- Premiere Image Processing Suite",
                            "+ Premiere Image Processing Suite", "- Premiere Image Processing Suite"));
    EXPECT_THAT(host().balance().suites,
                ElementsAre(std::pair<const std::string, std::int64_t>("Premiere Error Suite 3", 1)));
    const std::vector<std::string> lines = log().newLines();
    ASSERT_GE(lines.size(), 4U);
    EXPECT_EQ(lines[2], "Acquiring suite: r: 0, v: 3, n: 'Premiere Error Suite', ptr: <address>");
    EXPECT_EQ(lines[3], "Releasing suite: r: 0, v: 3, n: 'Premiere Error Suite'");
}

TEST_F(PluginSelectors, ShutdownWithoutInitAndASecondShutdownReleaseNothing) {
    logOn();
    start();
    EXPECT_EQ(importer().shutdown(), host::imNoErr);
    EXPECT_EQ(importer().shutdown(), host::imNoErr);
    EXPECT_THAT(suiteCalls(), ElementsAre());
    EXPECT_EQ(log().news(), R"(
Log opened
Application: <host>
----------------------
[imShutdown] (1)
    [imNoErr] (0)
----------------------
[imShutdown] (1)
    [imNoErr] (0)
)");
}

TEST_F(PluginSelectors, InitAfterShutdownStartsAgain) {
    startAndInit();
    ASSERT_EQ(importer().shutdown(), host::imNoErr);
    EXPECT_EQ(importer().init().result, host::imNoErr);
    simhost::Clip clip(importer(), placeClip());
    EXPECT_EQ(clip.getInfo(0).result, host::imNoErr);
}

TEST_F(PluginSelectors, SupportsEightIsTheHostsMagicAnswerAndTouchesNothing) {
    start();
    EXPECT_EQ(importer().getSupports8(), host::malSupports8);
    EXPECT_EQ(host().totalCalls(), 0U);
}

TEST_F(PluginSelectors, FormatZeroIsTheAvi) {
    start();
    importer().setRecordFill(kPattern);
    const auto answer = importer().getIndFormat(0);
    EXPECT_EQ(answer.result, host::imNoErr);
    EXPECT_TRUE(wroteExactly(
        answer,
        {text(0, "VIVA", "filetype 'AVIV', lowest byte first"), number32(8, 0, "canWriteTimecode"),
         text(12, {"Orvantis AVI\0", 13}, "FormatName"), text(268, {"Orvantis AVI\0", 13}, "FormatShortName"),
         text(300, {"avi\0\0", 5}, "PlatformExtension")}));
}

TEST_F(PluginSelectors, OtherFormatsAreABadIndexAndLeaveTheRecordAlone) {
    logOn();
    start();
    importer().setRecordFill(kPattern);
    for (const std::uint32_t index : {1U, 2U, 0x80000000U, 0xFFFFFFFFU}) {
        const auto answer = importer().getIndFormat(index);
        EXPECT_EQ(answer.result, host::imBadFormatIndex) << index;
        EXPECT_TRUE(wroteExactly(answer, {})) << index;
        EXPECT_THAT(log().newLines(),
                    testing::Contains("index " + std::to_string(index) + ": imBadFormatIndex"));
    }
}

TEST_F(PluginSelectors, OfANumberInAPointerOnlyTheLowHalfCounts) {
    logOn();
    start();
    simhost::GuardedRecord record(simhost::filledRecord<host::imIndFormatRec>(kPattern));
    EXPECT_EQ(importer().callWithNumber(host::imGetIndFormat, 0xFFFFFFFF'00000000U, record.address()),
              host::imNoErr);
    void* names = nullptr;
    EXPECT_EQ(importer().callWithNumber(host::imGetSubTypeNames, 0xFFFFFFFF'41564956U, &names),
              host::imNoErr);
    EXPECT_THAT(log().newLines(),
                testing::AllOf(testing::Contains("index 0: AVIV"), testing::Contains("filetype: AVIV")));
    EXPECT_TRUE(host().freeBlock(names));
}

TEST_F(PluginSelectors, SubTypesAreOneBlockOf516BytesEach) {
    start();
    void* block = nullptr;
    ASSERT_EQ(importer().callWithNumber(host::imGetSubTypeNames, host::kFileTypeAviv, &block), host::imNoErr);
    // The host tells the number of entries from the block's size.
    ASSERT_EQ(host().blockSize(block), kSubTypes * 516U);
    EXPECT_EQ(host().calls(Service::kNewPtr), 1U);

    std::string expected;
    for (const formatlists::CodedType& type : formatlists::codedTypes()) {
        const std::string name = type.name;
        std::string entry(516, '\0');
        for (std::size_t i = 0; i < 4; ++i) {
            entry[i] = type.tag[3 - i];
        }
        for (std::size_t i = 0; i < name.size(); ++i) {
            entry[4 + 2 * i] = name[i];
        }
        expected += entry;  // and zeros behind the name, so that nothing of the host's memory is passed on
    }
    EXPECT_TRUE(std::string_view(static_cast<const char*>(block), kSubTypes * 516) == expected);
    EXPECT_TRUE(host().freeBlock(block));
}

TEST_F(PluginSelectors, EveryFileTypeHasTheSameSubTypes) {
    logOn();
    start();
    const simhost::SubTypeNames known = importer().getSubTypeNames(host::kFileTypeAviv);
    const simhost::SubTypeNames zero = importer().getSubTypeNames(0);
    ASSERT_EQ(known.names.size(), kSubTypes);
    ASSERT_EQ(zero.names.size(), kSubTypes);
    for (std::size_t i = 0; i < kSubTypes; ++i) {
        EXPECT_EQ(known.names[i].code, zero.names[i].code);
        EXPECT_EQ(known.names[i].nameUtf8, zero.names[i].nameUtf8);
    }
    EXPECT_THAT(log().newLines(), testing::Contains("filetype: [0][0][0][0]"));
}

TEST_F(PluginSelectors, SubTypesWithoutMemoryAre99AndLeaveTheHostsVariableAlone) {
    logOn();
    start();
    host().addFault(failOnce(Service::kNewPtr));
    void* names = &names;
    EXPECT_EQ(importer().callWithNumber(host::imGetSubTypeNames, host::kFileTypeAviv, &names), 99);
    EXPECT_EQ(names, &names);
    EXPECT_EQ(log().news(), R"(
Log opened
Application: <host>
----------------------
[imGetSubTypeNames] (54)
filetype: AVIV
FATAL: Unhandled exception during [imGetSubTypeNames] (54): std::bad_alloc
)");
    // The next request is served.
    EXPECT_EQ(importer().getSubTypeNames(host::kFileTypeAviv).names.size(), kSubTypes);
}

TEST_F(PluginSelectors, WhatIsNotInTheTableIsUnsupportedAndAsksNothingOfTheHost) {
    start();
    const std::vector<std::int32_t> table = {0, 1, 8, 9, 12, 13, 14, 25, 27, 36, 37, 39, 46, 47, 54, 64};
    for (std::int32_t selector = 0; selector <= 120; ++selector) {
        if (std::find(table.begin(), table.end(), selector) != table.end()) {
            continue;
        }
        std::uint64_t first = 0x1111111111111111U;
        std::uint64_t second = 0x2222222222222222U;
        EXPECT_EQ(importer().call(selector, &first, &second), host::imUnsupported) << selector;
        EXPECT_EQ(first, 0x1111111111111111U) << selector;
        EXPECT_EQ(second, 0x2222222222222222U) << selector;
    }
    EXPECT_EQ(host().totalCalls(), 0U);
}

TEST_F(PluginSelectors, SelectorsAreComparedWithoutTheirSign) {
    start();
    for (const std::int32_t selector : {-1, -2, -64, -2147483647 - 1, 2147483647, 1000, 65, 66, 82}) {
        EXPECT_EQ(importer().call(selector, nullptr, nullptr), host::imUnsupported) << selector;
    }
}

TEST_F(PluginSelectors, UnsupportedSelectorsAreLoggedByNameAndNumber) {
    logOn();
    start();
    for (const std::int32_t selector : {2, 5, 30, 65, 66, 67, -1}) {
        ASSERT_EQ(importer().call(selector, nullptr, nullptr), host::imUnsupported) << selector;
    }
    EXPECT_EQ(log().news(), R"(
Log opened
Application: <host>
----------------------
[????] (2)
    [imUnsupported] (3)
----------------------
[imImportImage] (5)
    [imUnsupported] (3)
----------------------
[imGetSequentialAudio] (30)
    [imUnsupported] (3)
----------------------
[imSelectClipFrameDescriptor] (65)
    [imUnsupported] (3)
----------------------
[imPerformSourceSettingsCommand] (66)
    [imUnsupported] (3)
----------------------
[????] (67)
    [imUnsupported] (3)
----------------------
[????] (-1)
    [imUnsupported] (3)
)");
}

TEST_F(PluginSelectors, StandardParametersMayVanishBetweenCalls) {
    // simhost destroys the record behind each call; only what it leads to stays. A frame needs the suites
    // long after the record of its file's opening is gone.
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    EXPECT_TRUE(clip.getFrame(0, clip.pixelFormats().formats.front()).frame.has_value());
}

}  // namespace
