#include "simhost/rules.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

#include "fake_plugin.h"
#include "host/result_codes.h"
#include "host/suites.h"
#include "simhost/clip.h"
#include "simhost/host.h"

namespace simhost {
namespace {

TEST(HostRules, IdsAreUniqueInGroupsAndFoundAgain) {
    std::set<std::string> ids;
    std::set<std::string> groups;
    std::string last;
    for (const RuleText& row : rules()) {
        EXPECT_TRUE(std::regex_match(row.id, std::regex("[a-z]+\\.[a-z]+(-[a-z]+)*"))) << row.id;
        EXPECT_TRUE(ids.insert(row.id).second) << row.id;
        const std::string id = row.id;
        const std::string group = id.substr(0, id.find('.'));
        EXPECT_TRUE(group == last || groups.insert(group).second) << row.id << " stands apart from its group";
        last = group;
        EXPECT_EQ(findRule(row.id), &ruleText(row.rule));
        EXPECT_GE(row.level, 1);
        EXPECT_LE(row.level, 10);
    }
    EXPECT_EQ(findRule("records.bound"), nullptr);
}

TEST(HostRules, SentencesAndReasonsEndLikeSentences) {
    for (const RuleText& row : rules()) {
        for (const std::string text : {row.sentence, row.reason}) {
            EXPECT_TRUE(std::regex_match(text, std::regex("([A-Z]|im).*[^ ]\\."))) << row.id << ": " << text;
            EXPECT_EQ(text.find('|'), std::string::npos) << "would end a cell of the page's tables";
        }
    }
}

TEST(HostRules, TheirPageIsTheOneInDocs) {
    const char* const page = ORVANTIS_DOCS_FOLDER "/host-rules.md";
    if (std::getenv("ORVANTIS_WRITE_PAGES") != nullptr) {
        std::ofstream(page, std::ios::binary) << rulesPage();
    }
    std::ostringstream stands;
    stands << std::ifstream(page, std::ios::binary).rdbuf();
    std::string text = stands.str();
    std::erase(text, '\r');  // of a checkout on Windows
    EXPECT_EQ(text, rulesPage()) << "run simhost_tests once with ORVANTIS_WRITE_PAGES=1";
}

TEST(HostRules, AViolationTellsWhatItKnows) {
    EXPECT_EQ((Violation{Rule::kMemoryLive, "getPtrSize", "no live block"}.text()),
              "memory.live: getPtrSize: no live block");
    EXPECT_EQ((Violation{Rule::kFramesBounds, "", "bytes", "frame"}.text()), "frames.bounds: frame: bytes");
    EXPECT_EQ((Violation{Rule::kSoundBounds, "imImportAudio7", "more", "imImportAudioRec7", "buffer"}.text()),
              "sound.bounds: imImportAudio7, imImportAudioRec7.buffer: more");
    EXPECT_EQ((Violation{Rule::kFramesAccess, "CreatePPix", "0", "", "access"}.text()),
              "frames.access: CreatePPix, access: 0");
    EXPECT_EQ((Violation{Rule::kSuitesReturned, "", "held"}.text()), "suites.returned: held");
}

TEST(HostRules, EveryMissingArgumentIsNamed) {
    Host sim;
    const host::SPBasicSuite* basic = sim.basicSuite();
    const void* table = nullptr;
    (void)basic->AcquireSuite(nullptr, 1, &table);
    (void)basic->AcquireSuite(host::kTimeSuiteName, host::kTimeSuiteVersion, nullptr);
    (void)basic->ReleaseSuite(nullptr, 1);
    using test::acquire;
    const auto* error = acquire<host::ErrorSuite>(basic, host::kErrorSuiteName, host::kErrorSuiteVersion);
    (void)error->SetEventStringUnicode(host::kEventTypeError, nullptr, u"b");
    (void)error->SetEventStringUnicode(host::kEventTypeError, u"a", nullptr);
    const auto* creator =
        acquire<host::PPixCreatorSuite>(basic, host::kPPixCreatorSuiteName, host::kPPixCreatorSuiteVersion);
    const auto* ppix = acquire<host::PPixSuite>(basic, host::kPPixSuiteName, host::kPPixSuiteVersion);
    host::PPixHand frame = nullptr;
    const host::prRect bounds{0, 0, 4, 2};
    (void)creator->CreatePPix(nullptr, host::kBufferAccessWriteOnly, host::PrPixelFormat_BGRA_4444_8u,
                              &bounds);
    (void)creator->CreatePPix(&frame, host::kBufferAccessWriteOnly, host::PrPixelFormat_BGRA_4444_8u,
                              nullptr);
    (void)creator->CreatePPix(&frame, host::kBufferAccessWriteOnly, host::PrPixelFormat_BGRA_4444_8u,
                              &bounds);
    (void)ppix->GetPixels(frame, 7, nullptr);
    (void)ppix->GetPixels(frame, host::kBufferAccessWriteOnly, nullptr);
    (void)ppix->GetRowBytes(frame, nullptr);
    (void)ppix->Dispose(frame);
    const auto* time = acquire<host::TimeSuite>(basic, host::kTimeSuiteName, host::kTimeSuiteVersion);
    (void)time->GetTicksPerSecond(nullptr);
    const auto* images = acquire<host::ImageProcessingSuite>(basic, host::kImageProcessingSuiteName,
                                                             host::kImageProcessingSuiteVersion);
    (void)images->FormatHasAlpha(host::PrPixelFormat_BGRA_4444_8u, nullptr);
    const auto* audio = acquire<host::AudioSuite>(basic, host::kAudioSuiteName, host::kAudioSuiteVersion);
    float* channels[] = {nullptr};
    (void)audio->UninterleaveAndConvertFrom16BitInteger(nullptr, channels, 1, 1);
    (void)audio->UninterleaveAndConvertFrom16BitInteger(&frame, channels, 1, 1);
    EXPECT_EQ(texts(sim.violations()),
              (std::vector<std::string>{
                  "suites.arguments: AcquireSuite, name: null",
                  "suites.arguments: AcquireSuite, suite: null",
                  "suites.arguments: ReleaseSuite, name: null",
                  "suites.arguments: SetEventStringUnicode, title: null",
                  "suites.arguments: SetEventStringUnicode, description: null",
                  "suites.arguments: CreatePPix, frame: null",
                  "suites.arguments: CreatePPix, bounds: null",
                  "suites.arguments: GetPixels, access: 7",
                  "suites.arguments: GetPixels, pixels: null",
                  "suites.arguments: GetRowBytes, rowBytes: null",
                  "suites.arguments: GetTicksPerSecond, ticks: null",
                  "suites.arguments: FormatHasAlpha, answer: null",
                  "suites.arguments: UninterleaveAndConvertFrom16BitInteger, source: null",
                  "suites.arguments: UninterleaveAndConvertFrom16BitInteger, destination: null",
              }));
}

TEST(HostRules, ARefusalThatChangesThePrivateDataIsTold) {
    Host sim;
    test::FakePlugin fake;
    test::makeWellBehaved(fake);
    fake.on[host::imOpenFile8] = [](auto*, void*, void* record) {
        static_cast<host::imFileOpenRec8*>(record)->privatedata = record;
        return host::imBadFile;
    };
    const Importer importer(sim, fake.plugin);
    EXPECT_FALSE(Clip(importer, "a.avi").isOpen());
    EXPECT_EQ(texts(sim.violations()),
              (std::vector<std::string>{
                  "files.refusal: imOpenFile8, imFileOpenRec8.privatedata: changed with result " +
                  std::to_string(host::imBadFile)}));
}

}  // namespace
}  // namespace simhost
