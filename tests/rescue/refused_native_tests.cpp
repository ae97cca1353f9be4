// "importer_host rescue" where the system takes no file of that name or no more bytes: what is said names the
// file that the user knows, and the clip is as it was. Native only, where names and files have limits that a
// test can set.
#include <cstdlib>

#include "tests/tool/tool_run.h"

namespace {

using simhost::tool::kNoOutput;
using testing::ElementsAre;
using testing::HasSubstr;

class RescueRefused : public ToolTest {
 protected:
    std::string clipWithoutIndex(const std::string& name) const {
        auto builder = clips::builder({.frames = 40});
        orvantis::test::Bytes bytes = builder.build();
        bytes.resize(static_cast<std::size_t>(builder.placements().back().offset + 10));
        return write(name, bytes);
    }
    /// What the program says when no file may have a single byte more.
    std::string saidOnAFullDisk(const std::string& words) const {
        const std::string command = "( trap '' XFSZ; ulimit -f 0; '" ORVANTIS_BUILT_TOOL "' rescue " + words +
                                    " ) 2>&1 > /dev/null | cat > '" + in("said") + "'";
        EXPECT_EQ(std::system(command.c_str()), 0);
        const std::string said = read("said");
        std::filesystem::remove(folder / "said");
        return said;
    }
};

TEST_F(RescueRefused, AFullDiskIsToldByTheNameThatTheFileWouldHave) {
    const std::string clip = clipWithoutIndex("clip.avi");
    const std::string before = read("clip.avi");
    EXPECT_THAT(saidOnAFullDisk("'" + clip + "' --out '" + in("new.avi") + "'"),
                HasSubstr("cannot write to '" + in("new.avi") + "': "));
    EXPECT_THAT(saidOnAFullDisk("'" + clip + "' --in-place"),
                HasSubstr("cannot write to '" + clip + ".undo': "));
    EXPECT_EQ(read("clip.avi"), before);
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("clip.avi"));
}

TEST_F(RescueRefused, NamesThatAreTooLongAreCalledThat) {
    const ToolRun out =
        runTool({"rescue", clipWithoutIndex("clip.avi"), "--out", in(std::string(300, 'x') + ".avi")});
    EXPECT_EQ(out.code, kNoOutput);
    EXPECT_THAT(out.err, HasSubstr("name too long\n  -> choose another name or folder\n"));
    // A clip whose undo file would have such a name.
    const std::string name = std::string(248, 'y') + ".avi";
    const std::string clip = clipWithoutIndex(name);
    const std::string before = read(name);
    const ToolRun inPlace = runTool({"rescue", clip, "--in-place"});
    EXPECT_EQ(inPlace.code, kNoOutput);
    EXPECT_THAT(inPlace.err, HasSubstr("cannot create '" + clip + ".undo': File name too long"));
    EXPECT_EQ(read(name), before);
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("clip.avi", name));
}

}  // namespace
