// What keeps a clip from being opened: each case in a sentence of its own, in every command, and as an
// object.
#include <filesystem>
#include <set>

#include "tests/support/environment.h"
#include "tests/tool/tool_run.h"

namespace {

using orvantis::test::AviBuilder;
using orvantis::test::Bytes;
using simhost::tool::kFailed;
using simhost::tool::kNoPlugin;
using simhost::tool::kUsage;
using testing::HasSubstr;
using testing::StartsWith;

class ToolErrors : public ToolTest {
 protected:
    std::string foreignClip() const { return write("foreign.avi", clips::builder({.tag = "XYZ1"}).build()); }
    /// "RIFF….AVI " and nothing behind it.
    std::string cutClip() const {
        Bytes bytes = clips::builder().build();
        bytes.resize(12);
        return write("cut.avi", bytes);
    }
    std::string soundOnly() const {
        AviBuilder avi;
        avi.addStream(orvantis::test::pcmStream(2, 8000, 16)).addFilledChunk(0, 100, 7);
        return write("sound.avi", avi.build());
    }
    /// A command line for each command that opens clips.
    std::vector<std::vector<std::string>> commandsOn(const std::string& clip) const {
        return {{"info", clip},
                {"frames", clip, "--sheet", in("sheet.png")},
                {"audio", clip, "--out", in("sound.wav")},
                {"async", clip},
                {"report", clip, "--out", in("out"), "--no-log"},
                {"soak", clip, "--minutes", "0.01"},
                {"bench", clip, "--what", "frames", "--runs", "1"}};
    }
};

TEST_F(ToolErrors, EveryCaseHasASentenceAndAKindOfItsOwn) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {in("missing.avi"), "missing-file"},
        {folder.path().string(), "folder"},
        {"", "empty-path"},
        {write("text.avi", "no AVI at all"), "not-avi"},
        {cutClip(), "no-headers"},
        {foreignClip(), "other-codec"},
        {soundOnly(), "no-pictures"}};
    std::set<std::string> sentences;
    for (const auto& [path, kind] : cases) {
        // A folder of clips is fine for some commands; frames are those of one clip.
        const ToolRun result = runTool({"frames", path, "--sheet", in("sheet.png"), "--json"});
        EXPECT_EQ(result.code, kFailed) << kind;
        const auto error = result.json()["error"];
        EXPECT_EQ(error["kind"], kind) << result.err;
        EXPECT_EQ(error["exitCode"], kFailed);
        EXPECT_NE(error["advice"], "") << kind;
        std::string sentence = error["message"];
        if (const std::size_t at = sentence.find(path); !path.empty() && at != std::string::npos) {
            sentence.erase(at, path.size());
        }
        EXPECT_TRUE(sentences.insert(sentence).second) << sentence;
        EXPECT_THAT(result.err, HasSubstr("\n  -> ")) << "what to do";
    }
}

TEST_F(ToolErrors, EveryCommandTellsThemAlike) {
    for (const auto& [path, kind] :
         std::vector<std::pair<std::string, std::string>>{{in("missing.avi"), "missing-file"},
                                                          {write("text.avi", "no AVI at all"), "not-avi"},
                                                          {foreignClip(), "other-codec"}}) {
        std::string expected;
        for (auto arguments : commandsOn(path)) {
            const std::string plain = runTool(arguments).err;
            EXPECT_THAT(plain, HasSubstr("\n  -> ")) << arguments.front() << " " << kind;
            arguments.emplace_back("--json");
            const ToolRun result = runTool(arguments);
            EXPECT_EQ(result.code, kFailed) << arguments.front() << " " << kind;
            const auto json = result.json();
            const auto error = json.contains("reports") ? json["reports"][0]["error"] : json["error"];
            EXPECT_EQ(error["kind"], kind) << arguments.front();
            expected = expected.empty() ? error["message"].get<std::string>() : expected;
            EXPECT_EQ(error["message"], expected) << arguments.front();
        }
    }
}

TEST_F(ToolErrors, TheDoctorGivesTheSameAdvice) {
    const ToolRun result = runTool({"doctor", in("missing.avi")});
    EXPECT_THAT(result.out,
                HasSubstr("FAIL  clip: '" + in("missing.avi") + "' cannot be read: there is no such"));
    EXPECT_THAT(result.out, HasSubstr("-> check the spelling"));
}

#ifndef _WIN32
TEST_F(ToolErrors, AFileThatCannotBeReadIsNoMissingOne) {
    std::filesystem::create_symlink(folder / "loop.avi", folder / "loop.avi");
    const auto error = runTool({"info", in("loop.avi"), "--json"}).json()["error"];
    EXPECT_EQ(error["kind"], "unreadable-file");
    EXPECT_THAT(error["message"].get<std::string>(), HasSubstr("symbolic links"));
}
#else
TEST_F(ToolErrors, WithoutTheCodecLibraryItIsThatWhichIsMissing) {
    std::filesystem::create_directories(folder / "empty");
    std::filesystem::copy_file(
        std::filesystem::path(ORVANTIS_BUILT_TOOL).parent_path() / "ImporterOrvantis.prm",
        folder / "ImporterOrvantis.prm");
    const orvantis::test::ScopedEnvironment path("PATH", in("empty"));
    const auto result = runTool({"info", soundClip(), "--json", "--plugin", in("ImporterOrvantis.prm"),
                                 "--codec-folder", in("empty")});
    EXPECT_EQ(result.code, kNoPlugin);
    EXPECT_EQ(result.json()["error"]["kind"], "no-codec-library");
    EXPECT_THAT(result.err, HasSubstr("orvantis_common64.dll was not found"));
}
#endif

TEST_F(ToolErrors, AMissingPlugInIsNoMissingCodec) {
    const ToolRun result = runTool({"info", soundClip(), "--json", "--plugin", in("missing.prm")});
    EXPECT_EQ(result.code, kNoPlugin);
    EXPECT_EQ(result.json()["error"]["kind"], "no-plugin");
    EXPECT_THAT(result.err, StartsWith("importer_host: there is no plug-in '"));
}

TEST_F(ToolErrors, WrongArgumentsAreAnObjectToo) {
    const ToolRun result = runTool({"frames", soundClip(), "--json"});
    EXPECT_EQ(result.code, kUsage);
    EXPECT_EQ(result.json()["error"]["kind"], "usage");
}

}  // namespace
