// Which versions had to do with an answer.
#include <filesystem>

#include "tests/tool/small_pe.h"
#include "tests/tool/tool_run.h"

namespace {

using simhost::tool::kSuccess;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

class ToolVersions : public ToolTest {
 protected:
    /// A file with the version 1.2.3.4.
    std::string versionedPlugin() const { return write("small.prm", simhost::tool::smallPe()); }
};

TEST_F(ToolVersions, TheOptionNamesAllFive) {
    const ToolRun result = runTool({"--version", "--plugin", versionedPlugin()});
    EXPECT_EQ(result.code, kSuccess);
    EXPECT_THAT(result.out, StartsWith("importer_host " ORVANTIS_PROJECT_VERSION "\n"));
    EXPECT_THAT(result.out, HasSubstr("\nplug-in 1.2.3.4 (" + in("small.prm") + ")\n"));
    for (const char* line : {"\ncodec library ", "\nsystem ", "\nhost profile default\n"}) {
        EXPECT_THAT(result.out, HasSubstr(line));
    }
}

TEST_F(ToolVersions, AFileWithoutAVersionIsUnknown) {
    const ToolRun result = runTool({"--version", "--plugin", write("text.prm", "no library")});
    EXPECT_THAT(result.out, HasSubstr("\nplug-in unknown ("));
}

TEST_F(ToolVersions, InfoHasThemWithBothDates) {
    const std::string clip = soundClip();
    const auto json = runTool({"info", clip, "--json"}).json();
    const auto& versions = json["versions"];
    EXPECT_EQ(versions["tool"], ORVANTIS_PROJECT_VERSION);
    EXPECT_EQ(versions["hostProfile"], "default");
    EXPECT_NE(versions["system"], "");
    EXPECT_THAT(versions["codecLibrary"]["path"].get<std::string>(), HasSubstr("orvantis_common64"));
    EXPECT_NE(versions["plugin"]["version"], "");
    constexpr const char* kDate = "20..-..-.. ..:..:.. UTC";
    EXPECT_THAT(json["made"].get<std::string>(), MatchesRegex(kDate));
    EXPECT_THAT(json["file"]["modified"].get<std::string>(), MatchesRegex(kDate));
    const std::string text = runTool({"info", clip}).out;
    EXPECT_THAT(text, StartsWith("file:\n  path: " + clip + "\n")) << "what was asked about comes first";
    for (const char* line : {"made: 20", "  modified: 20", "  hostProfile: default\n"}) {
        EXPECT_THAT(text, HasSubstr(line));
    }
}

TEST_F(ToolVersions, TheDoctorAndTheLogHaveThem) {
    const std::string small = versionedPlugin();
    const ToolRun doctor = runTool({"doctor", "--plugin", small});
    EXPECT_THAT(doctor.out, StartsWith("importer_host " ORVANTIS_PROJECT_VERSION "\nplug-in 1.2.3.4 ("));
    EXPECT_EQ(runTool({"doctor", "--json", "--plugin", small}).json()["versions"]["plugin"]["version"],
              "1.2.3.4");
    const std::string log = write("a.log", "[2026-11-15 22:10:09] [1] Log opened\n");
    EXPECT_THAT(runTool({"log", log, "--plugin", small}).out, HasSubstr("\nplug-in 1.2.3.4 ("));
    EXPECT_EQ(runTool({"log", log, "--json", "--plugin", small}).json()["versions"]["plugin"]["version"],
              "1.2.3.4");
}

}  // namespace
