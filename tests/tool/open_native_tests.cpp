// A clip alone: its report is made and shown. Native only: the program that shows it is found on the path.
#include <filesystem>

#include "tests/support/environment.h"
#include "tests/tool/tool_run.h"

namespace {

using orvantis::test::ScopedEnvironment;
using simhost::tool::kSuccess;
using testing::HasSubstr;

class ToolOpen : public ToolTest {
 protected:
    ToolOpen() {
        write("bin/xdg-open", "#!/bin/sh\necho \"$1\" >> '" + in("shown") + "'\n");
        std::filesystem::permissions(folder / "bin" / "xdg-open", std::filesystem::perms::owner_all);
    }

    const ScopedEnvironment path{"PATH", in("bin") + ":" + *orvantis::test::getEnvironment("PATH")};
};

TEST_F(ToolOpen, AClipDroppedOnTheProgramIsReportedAndShown) {
    const ToolRun result = runTool({soundClip("cl\xC3\xAFp.avi")});
    EXPECT_EQ(result.code, kSuccess) << result.err;
    EXPECT_EQ(read("shown"), in("cl\xC3\xAFp.avi.html") + "\n");
    EXPECT_THAT(result.out, HasSubstr(in("cl\xC3\xAFp.avi.html")));
}

TEST_F(ToolOpen, SeveralDroppedClipsAreReportedEach) {
    EXPECT_EQ(runTool({soundClip("a.avi"), soundClip("b.avi")}).code, kSuccess);
    EXPECT_EQ(read("shown"), in("a.avi.html") + "\n" + in("b.avi.html") + "\n");
}

TEST_F(ToolOpen, AReportIsShownWhenAskedFor) {
    EXPECT_EQ(runTool({"report", soundClip(), "--out", in("out")}).code, kSuccess);
    EXPECT_FALSE(std::filesystem::exists(folder / "shown"));
    EXPECT_EQ(runTool({"report", soundClip(), "--out", in("out"), "--open"}).code, kSuccess);
    EXPECT_EQ(read("shown"), in("out/clip.avi.html") + "\n");
}

}  // namespace
