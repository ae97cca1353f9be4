// The ways in which Windows lets one file be named.
#include <windows.h>

#include <filesystem>

#include "tests/support/environment.h"
#include "tests/tool/tool_run.h"

namespace {

using simhost::tool::kNoOutput;
using simhost::tool::kSuccess;
using testing::HasSubstr;

class ToolOutputWindows : public ToolTest {};

TEST_F(ToolOutputWindows, EveryNameOfTheClipIsTheClip) {
    const std::string clip = soundClip("a clip with a long name.avi");
    const std::string before = read("a clip with a long name.avi");
    std::filesystem::create_hard_link(folder / "a clip with a long name.avi", folder / "link.txt");
    std::vector<std::string> names = {R"(\\?\)" + clip, clip + ".", in("A CLIP WITH A LONG NAME.AVI"),
                                      in("link.txt"), R"(\\?\)" + in("LINK.TXT")};
    std::wstring shorter(MAX_PATH, L'\0');
    const std::filesystem::path path = folder / "a clip with a long name.avi";
    shorter.resize(GetShortPathNameW(path.c_str(), shorter.data(), MAX_PATH));
    if (!shorter.empty()) {
        names.push_back(orvantis::test::utf8Path(shorter));
    }
    for (const std::string& name : names) {
        EXPECT_EQ(runTool({"info", clip, "--out", name}).code, kNoOutput) << name;
        EXPECT_EQ(read("a clip with a long name.avi"), before) << name;
    }
}

TEST_F(ToolOutputWindows, TheLogOfAReportStaysOutOfTheUsersLogs) {
    const auto home = orvantis::test::getEnvironment("USERPROFILE");
    ASSERT_TRUE(home.has_value());
    const std::filesystem::path logs = std::filesystem::path(*home) / "orvantis" / "adobe";
    const auto names = [&logs] {
        return std::filesystem::exists(logs) ? namesIn(logs) : std::vector<std::string>{};
    };
    const auto before = names();
    std::filesystem::create_directories(folder / "temporary");
    const orvantis::test::ScopedEnvironment tmp("TMP", in("temporary"));
    ASSERT_EQ(runTool({"report", soundClip(), "--out", in("out")}).code, kSuccess);
    EXPECT_THAT(read("out/clip.avi.html"), HasSubstr("Diagnostic log of this run"));
    EXPECT_EQ(names(), before);
    EXPECT_TRUE(namesIn(folder / "temporary").empty());
}

}  // namespace
