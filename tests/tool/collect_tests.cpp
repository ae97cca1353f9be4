// "importer_host collect": what is in the archive, and what is in no byte of it.
#include <cstdlib>
#include <filesystem>

#include "tests/support/environment.h"
#include "tests/tool/tool_run.h"
#include "tool/collect/personal_names.h"

#if defined(ORVANTIS_PYTHON)
#include "tests/support/child_process.h"
#endif

namespace {

using orvantis::test::ScopedEnvironment;
using simhost::tool::kFailed;
using simhost::tool::kNoOutput;
using simhost::tool::kSuccess;
using testing::Contains;
using testing::HasSubstr;

class ToolCollect : public ToolTest {
 protected:
    std::vector<std::string> namesOf(const nlohmann::json& told) const {
        std::vector<std::string> out;
        for (const auto& each : told["contents"]) {
            out.push_back(each["name"]);
        }
        return out;
    }
#if defined(ORVANTIS_PYTHON)
    /// Unpacked by another program, which checks the sums; empty when it cannot.
    std::string unpacked(const std::string& zip, const std::string& to) const {
        const std::vector<std::string> words = {"-m", "zipfile", "-e", zip, in(to)};
        EXPECT_EQ(orvantis::test::ChildProcess(ORVANTIS_PYTHON, words).wait(), 0);
        std::string all;
        for (const auto& each : std::filesystem::recursive_directory_iterator(folder / to)) {
            if (each.is_regular_file()) {
                all += each.path().filename().string() + "\n" + orvantis::test::readFile(each.path()) + "\n";
            }
        }
        return all;
    }
#endif
};

TEST_F(ToolCollect, HoldsEverythingThatIsAskedFor) {
    const ToolRun result =
        runTool({"collect", soundClip(), "--out", in("s.zip"), "--plugin-folder", in("plug-ins"), "--json"});
    ASSERT_EQ(result.code, kSuccess) << result.err;
    const auto told = result.json();
    EXPECT_EQ(told["out"], in("s.zip"));
    const auto names = namesOf(told);
    for (const char* name :
         {"versions.txt", "doctor.txt", "folders.txt", "reports/clip.avi.html", "README.txt"}) {
        EXPECT_THAT(names, Contains(name));
    }
    EXPECT_TRUE(read("s.zip").starts_with("PK"));
}

TEST_F(ToolCollect, TellsWhatIsInsideAndThatNothingIsSent) {
    const ToolRun result = runTool({"collect", "--out", in("s.zip"), "--plugin-folder", in("plug-ins")});
    EXPECT_EQ(result.code, kSuccess) << result.err;
    EXPECT_THAT(result.out, HasSubstr("\n  doctor.txt, "));
    EXPECT_THAT(result.out, HasSubstr("Nothing has been sent to anybody"));
}

TEST_F(ToolCollect, ClipsOfOneNameAndBadOnesAreAllThere) {
    const ToolRun result = runTool({"collect", soundClip("a/x.avi"), soundClip("b/x.avi"),
                                    write("bad.avi", "none"), "--out", in("s.zip"), "--json"});
    EXPECT_EQ(result.code, kSuccess) << result.err;
    const auto names = namesOf(result.json());
    EXPECT_THAT(names, Contains("reports/x.avi.html"));
    EXPECT_THAT(names, Contains("reports/x.avi (2).html"));
    EXPECT_THAT(names, Contains("reports/bad.avi.html"));
}

TEST_F(ToolCollect, NothingIsWrittenOntoAClip) {
    const std::string clip = soundClip();
    EXPECT_EQ(runTool({"collect", clip, "--out", clip}).code, kNoOutput);
    EXPECT_EQ(runTool({"collect", in("missing.avi"), "--out", in("s.zip")}).code, kFailed);
    EXPECT_THAT(namesIn(folder.path()), testing::ElementsAre("clip.avi"));
}

#if defined(ORVANTIS_PYTHON)

TEST_F(ToolCollect, AnotherProgramReadsItAndFindsNeitherNameNorHome) {
    const std::string home = in("home of Jane Doe");
    std::filesystem::create_directories(folder / "home of Jane Doe");
    const ScopedEnvironment homeIs("HOME", home);
    const ScopedEnvironment logsAre("ORVANTIS_TEST_PROFILE", home);
    const ScopedEnvironment userIs("USER", "jane.doe");
    const std::string clip = soundClip("home of Jane Doe/clips/jane.doe/JANE.DOE one.avi");
    (void)write("home of Jane Doe/plug-ins/jane.doe.prm", "no library");
    const std::string log =
        "[2026-11-15 22:10:09] [5312] Log opened\n[2026-11-15 22:10:09] [5312] m_filePathUtf8: '" + home +
        "/x.avi' and JANE.DOE\n";
    (void)write("home of Jane Doe/orvantis/adobe/orvantis_pr_importer_20261115_221009_00.log", log);
    const ToolRun result = runTool({"collect", clip, "--out", in("s.zip"), "--plugin-folder",
                                    in("home of Jane Doe/plug-ins"), "--frames", "2"});
    ASSERT_EQ(result.code, kSuccess) << result.err;
    std::string all = unpacked(in("s.zip"), "all");
    EXPECT_THAT(all, HasSubstr("plug-in folder: %USERPROFILE%"));
    EXPECT_THAT(all, HasSubstr("%USERNAME% one.avi.html"));
    EXPECT_THAT(all, HasSubstr("<h1>%USERNAME% one.avi</h1>"));
    EXPECT_THAT(all, HasSubstr("  %USERNAME%.prm, 10 bytes"));
    EXPECT_THAT(all, HasSubstr("data:image/png;base64,"));
    EXPECT_THAT(all, HasSubstr(":root")) << "the page keeps its style";
    EXPECT_THAT(all, HasSubstr("m_filePathUtf8: '%USERPROFILE%/x.avi' and %USERNAME%")) << "the user's log";
    std::ranges::transform(all, all.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    EXPECT_EQ(all.find("jane"), std::string::npos) << all.substr(all.find("jane") - 40, 80);
}

#endif

}  // namespace
