// When the log is written, and where: the registry value, the numbered file in the profile folder, and what
// happens when there is no place for it.
#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

#include "host/pixel_formats.h"
#include "host/result_codes.h"
#include "host/selectors.h"
#include "simhost/session.h"
#include "tests/integration/plugin_clip_test.h"
#include "tests/support/child_process.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#include <sanitizer/lsan_interface.h>
#define ORVANTIS_LEAKS_ARE_SOUGHT
#endif
#endif

namespace {

namespace fs = std::filesystem;
using orvantis::test::LogCapture;
using testing::Contains;

class PluginLogSwitch : public ClipTest {
 protected:
    /// Everything below the profile folder, by name.
    static std::vector<std::string> contentsOf(const LogCapture& capture) {
        std::vector<std::string> out;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(capture.profile())) {
            out.push_back(orvantis::test::utf8Path(entry.path().lexically_relative(capture.profile())));
        }
        return out;
    }
    /// A whole session with load and unload.
    void playSession() {
        simhost::Host host;
        simhost::Plugin plugin(pluginPath(), codecFolder());
        simhost::SessionOptions options;
        options.pathUtf8 = placeClip();
        const auto summary = simhost::runSession(simhost::Importer(host, plugin), options);
        EXPECT_GT(summary.frames, 0U);
        plugin.unload();
        EXPECT_TRUE(host.isClean()) << host.report();
    }
};

TEST_F(PluginLogSwitch, WithoutTheValueNothingIsCreated) {
    const LogCapture capture(LogCapture::Switch::kMissing);
    const auto before = contentsOf(capture);
    playSession();
    EXPECT_EQ(contentsOf(capture), before);
}

TEST_F(PluginLogSwitch, AValueOfZeroIsOff) {
    LogCapture capture(LogCapture::Switch::kMissing);
    capture.redirection().setSwitch(0);
    const auto before = contentsOf(capture);
    playSession();
    EXPECT_EQ(contentsOf(capture), before);
}

TEST_F(PluginLogSwitch, AnyOtherValueIsOn) {
    for (const std::uint32_t value : {1U, 2U, 0x80000000U, 0xFFFFFFFFU, 0x01000000U}) {
        LogCapture capture(LogCapture::Switch::kMissing);
        capture.redirection().setSwitch(value);
        start();
        EXPECT_EQ(importer().getSupports8(), host::malSupports8);
        stop();
        EXPECT_EQ(capture.files().size(), 1U) << value;
        restart();
    }
}

TEST_F(PluginLogSwitch, LoadingAndUnloadingAloneLeaveNoLog) {
    const LogCapture capture;
    start();
    stop();
    EXPECT_TRUE(capture.files().empty()) << "the switch is read with the first call, not before";
}

TEST_F(PluginLogSwitch, IsReadByTheFirstCallWhateverItIs) {
    for (const std::int32_t selector :
         {host::imShutdown, host::imGetSupports8, host::imGetIndFormat, host::imSelectClipFrameDescriptor}) {
        const LogCapture capture;
        start();
        static_cast<void>(importer().call(selector, nullptr, nullptr));
        stop();
        EXPECT_EQ(capture.files().size(), 1U) << selector;
        restart();
    }
}

TEST_F(PluginLogSwitch, IsReadOnceSoThatTurningItOnLaterWaitsForTheNextProcess) {
    LogCapture capture(LogCapture::Switch::kMissing);
    start();
    EXPECT_EQ(importer().getSupports8(), host::malSupports8);
    capture.redirection().setSwitch(1);
    EXPECT_EQ(importer().getSupports8(), host::malSupports8);
    stop();
    EXPECT_TRUE(capture.files().empty());
    restart();
    start();
    EXPECT_EQ(importer().getSupports8(), host::malSupports8);
    stop();
    EXPECT_EQ(capture.files().size(), 1U) << "a new load reads it anew";
}

TEST_F(PluginLogSwitch, TurningItOffLaterChangesNothing) {
    LogCapture capture;
    start();
    EXPECT_EQ(importer().getSupports8(), host::malSupports8);
    capture.redirection().removeSwitch();
    EXPECT_EQ(importer().getSupports8(), host::malSupports8);
    stop();
    EXPECT_THAT(capture.lines(), Contains("[T] [#] [imGetSupports8] (36)").Times(2));
}

TEST_F(PluginLogSwitch, TheFileStartsWithTheApplicationAndEndsWithTheUnload) {
    const LogCapture capture;
    start();
    EXPECT_EQ(importer().getSupports8(), host::malSupports8);
    stop();
    const std::vector<std::string> lines = capture.lines();
    ASSERT_EQ(lines.size(), 7U);
    EXPECT_EQ(lines[0], "[T] [#] Log opened");
    EXPECT_EQ(lines[1], "[T] [#] Application: " + orvantis::test::utf8Path(orvantis::test::thisProgram()));
    EXPECT_EQ(lines[2], "[T] [#] ----------------------");
    EXPECT_EQ(lines[5], "[T] [#] Module destroy");
    EXPECT_EQ(lines[6], "[T] [#] Log closed");
}

TEST_F(PluginLogSwitch, EachLineIsOnTheDiskBeforeTheCallReturns) {
    const LogCapture capture;
    start();
    EXPECT_EQ(importer().getSupports8(), host::malSupports8);
    // Read while the plug-in still has the file open.
    EXPECT_EQ(capture.lines().size(), 5U);
}

// "orvantis_pr_importer_20261115_221009_00.log"
testing::AssertionResult isLogName(const std::string& name, const std::string& number) {
    const std::string pattern = "orvantis_pr_importer_dddddddd_dddddd_" + number + ".log";
    bool fits = name.size() == pattern.size();
    for (std::size_t i = 0; fits && i < name.size(); ++i) {
        fits =
            pattern[i] == 'd' && i > 20 && i < 37 ? name[i] >= '0' && name[i] <= '9' : name[i] == pattern[i];
    }
    return fits ? testing::AssertionSuccess()
                : testing::AssertionFailure() << name << " is not like " << pattern;
}

TEST_F(PluginLogSwitch, TheFileIsNamedByTimeAndNumber) {
    const LogCapture capture;
    start();
    EXPECT_EQ(importer().getSupports8(), host::malSupports8);
    stop();
    ASSERT_EQ(capture.files().size(), 1U);
    EXPECT_EQ(capture.files()[0].parent_path(), capture.logFolder());
    EXPECT_TRUE(isLogName(capture.files()[0].filename().string(), "00"));
}

TEST_F(PluginLogSwitch, TwoLoadsInOneSecondAreNumbered) {
    // Two loads can fall into two seconds; then there are two numbers 00, and another try.
    for (int attempt = 0; attempt < 20; ++attempt) {
        const LogCapture capture;
        for (int load = 0; load < 2; ++load) {
            start();
            EXPECT_EQ(importer().getSupports8(), host::malSupports8);
            stop();
            restart();
        }
        const auto files = capture.files();
        ASSERT_EQ(files.size(), 2U);
        const std::string first = files[0].filename().string();
        const std::string second = files[1].filename().string();
        constexpr std::size_t kStampEnd = sizeof("orvantis_pr_importer_20261115_221009") - 1;
        EXPECT_TRUE(isLogName(first, "00"));
        if (first.substr(0, kStampEnd) == second.substr(0, kStampEnd)) {
            EXPECT_TRUE(isLogName(second, "01"));
            EXPECT_NE(orvantis::test::readFile(files[0]).find("Log closed\r\n"), std::string::npos);
            EXPECT_NE(orvantis::test::readFile(files[1]).find("Log closed\r\n"), std::string::npos);
            return;
        }
        EXPECT_TRUE(isLogName(second, "00"));
    }
    FAIL() << "no two loads fell into one second";
}

TEST_F(PluginLogSwitch, WithoutAProfileFolderThePluginWorksUnlogged) {
    LogCapture capture;
    capture.redirection().setProfile(folder() / "there-is-none");
    playSession();
    EXPECT_TRUE(capture.files().empty());
}

TEST_F(PluginLogSwitch, WithAFileInThePlaceOfTheLogFolderThePluginWorksUnlogged) {
    const LogCapture capture;
    orvantis::test::writeFile(capture.profile() / "orvantis", "in the way");
    playSession();
    EXPECT_EQ(orvantis::test::readFile(capture.profile() / "orvantis"), "in the way");
}

TEST_F(PluginLogSwitch, AHostThatUnloadsWithoutShutdownIsNotCalledAnyMore) {
#ifdef ORVANTIS_LEAKS_ARE_SOUGHT
    // What such a host leaves behind is the object that holds the error suite: giving the suite back is the
    // host's to ask for.
    const __lsan::ScopedDisabler leakIsMeant;
#endif
    const LogCapture capture;
    simhost::Host host;
    simhost::Plugin plugin(pluginPath(), codecFolder());
    ASSERT_EQ(simhost::Importer(host, plugin).init().result, host::imNoErr);
    const std::uint64_t calls = host.totalCalls();
    plugin.unload();
    EXPECT_EQ(host.totalCalls(), calls) << "the host may have taken its suites down already";
    const auto lines = capture.lines();
    ASSERT_GE(lines.size(), 2U);
    EXPECT_EQ(lines[lines.size() - 2], "[T] [#] Module destroy");
    EXPECT_EQ(lines[lines.size() - 1], "[T] [#] Log closed");
}

}  // namespace
