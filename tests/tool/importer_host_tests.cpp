// The command-line tool as its users see it: the built program opens a clip through the built plug-in.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/integration/plugin_clips.h"
#include "tests/integration/plugin_path.h"
#include "tests/support/environment.h"
#include "tests/tool/tool_run.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/media/wav.h"

namespace simhost::tool {
namespace {

using orvantis::test::readFile;
using orvantis::test::utf8Path;

class ImporterHost : public ToolTest {
 protected:
    ImporterHost() { write(u8"cl\u00EFp \u2603.avi", clips::builder().build()); }

    std::string clipPath() const { return utf8Path(clip); }

    const std::filesystem::path clip = folder / std::u8string_view(u8"cl\u00EFp \u2603.avi");
};

TEST_F(ImporterHost, HelpAndVersionSucceed) {
    EXPECT_EQ(run({"--help"}), kSuccess);
    EXPECT_EQ(run({"frames", "--help"}), kSuccess);
    EXPECT_EQ(run({"--version"}), kSuccess);
}

TEST_F(ImporterHost, WrongArgumentsAreExitCode2) {
    EXPECT_EQ(run({}), kUsage);
    EXPECT_EQ(run({"info"}), kUsage);
    EXPECT_EQ(run({"info", clipPath(), "--nonesuch"}), kUsage);
    EXPECT_EQ(run({"info", clipPath(), "--profile", "nonesuch"}), kUsage);
    EXPECT_EQ(run({"frames", clipPath()}), kUsage) << "nothing to write";
    EXPECT_EQ(run({"frames", clipPath(), "--range", "4:2", "--out", in(u8"out")}), kUsage);
    EXPECT_EQ(run({"frames", clipPath(), "--format", "abcd", "--out", in(u8"out")}), kUsage);
    EXPECT_EQ(run({"async", clipPath(), "--pattern", "sideways"}), kUsage);
}

TEST_F(ImporterHost, RefusalsAreExitCode1) {
    EXPECT_EQ(run({"info", in(u8"missing.avi")}), kFailed);
    orvantis::test::writeFile(folder / "text.avi", "no AVI at all");
    EXPECT_EQ(run({"info", in(u8"text.avi")}), kFailed);
    EXPECT_EQ(run({"frames", clipPath(), "--range", "5", "--out", in(u8"out")}), kFailed)
        << "one past the end";
    EXPECT_EQ(run({"frames", clipPath(), "--range", "5:9", "--out", in(u8"out")}), kFailed);
    EXPECT_EQ(run({"audio", clipPath(), "--stream", "1", "--out", in(u8"a.wav")}), kFailed);
    EXPECT_EQ(run({"frames", clipPath(), "--out", in(u8"out"), "--profile", "no-creator-suite"}), kFailed);
}

TEST_F(ImporterHost, APluginThatDoesNotLoadOrStartIsExitCode3) {
    EXPECT_EQ(run({"info", clipPath(), "--plugin", in(u8"missing.prm")}), kNoPlugin);
    EXPECT_EQ(run({"info", clipPath(), "--plugin", clipPath()}), kNoPlugin);
    EXPECT_EQ(run({"info", clipPath(), "--profile", "no-image-suite"}), kNoPlugin);
}

TEST_F(ImporterHost, AnOutputThatCannotBeWrittenIsExitCode4) {
    // A file stands where the folder should be.
    EXPECT_EQ(run({"frames", clipPath(), "--out", clipPath() + "/sub"}), kNoOutput);
    EXPECT_EQ(run({"frames", clipPath(), "--sheet", in(u8"missing/sheet.png")}), kNoOutput);
    EXPECT_EQ(run({"audio", clipPath(), "--out", in(u8"missing/a.wav")}), kNoOutput);
    EXPECT_EQ(run({"info", clipPath(), "--out", in(u8"missing/info.txt")}), kNoOutput);
}

TEST_F(ImporterHost, InfoTellsWhatTheHostWouldSee) {
    ASSERT_EQ(run({"info", clipPath(), "--json", "--out", in(u8"info.json")}), kSuccess);
    const auto json = nlohmann::json::parse(readFile(folder / "info.json"));
    EXPECT_EQ(json["plugin"]["priority"], 200);
    EXPECT_EQ(json["plugin"]["supports8"], true);
    EXPECT_EQ(json["plugin"]["formats"].size(), 1u);
    EXPECT_EQ(json["plugin"]["formats"][0]["fileType"], "AVIV");
    EXPECT_EQ(json["plugin"]["formats"][0]["extensions"], nlohmann::json({"avi"}));
    EXPECT_EQ(json["plugin"]["formats"][0]["subTypes"].size(), 17u);
    EXPECT_EQ(json["file"]["path"], clipPath());
    ASSERT_EQ(json["file"]["streams"].size(), 1u);
    const auto& stream = json["file"]["streams"][0];
    EXPECT_EQ(stream["result"], 0);
    EXPECT_EQ(stream["video"]["width"], clips::kWidth);
    EXPECT_EQ(stream["video"]["height"], clips::kHeight);
    EXPECT_EQ(stream["video"]["subType"], "O8Y2");
    EXPECT_EQ(stream["video"]["frames"], 5);
    EXPECT_EQ(stream["video"]["framesPerSecond"], 25.0);
    EXPECT_EQ(stream["video"]["pixelFormats"][0]["code"], "yuy2");
    EXPECT_EQ(stream["video"]["dataRate"]["bytes"], 5 * clips::kFrameBytes);
    EXPECT_NE(stream["video"]["analysis"].get<std::string>().find("Video stream:"), std::string::npos);
    EXPECT_EQ(stream["audio"]["channels"], 2);
    EXPECT_EQ(stream["audio"]["sampleFrames"], 5 * clips::kSamplesPerFrame);
    EXPECT_EQ(stream["audio"]["channelLabels"], nlohmann::json({"FrontLeft", "FrontRight"}));
}

TEST_F(ImporterHost, InfoAsTextHoldsTheSameFacts) {
    ASSERT_EQ(run({"info", clipPath(), "--out", in(u8"info.txt")}), kSuccess);
    const std::string text = readFile(folder / "info.txt");
    for (const char* line :
         {"  path: ", "      frames: 5\n", "      sampleRate: 8000.0\n",
          "        [uyvy] PrPixelFormat_UYVY_422_8u_601\n", "      channelLabels: FrontLeft, FrontRight\n"}) {
        EXPECT_NE(text.find(line), std::string::npos) << line;
    }
}

TEST_F(ImporterHost, RawFramesAreTheRowsFromTheTopUnderEveryRowPolicy) {
    for (const char* profile : {"default", "minimal-rows", "negative-rows", "opposite-origins", "older"}) {
        const std::string out = in(u8"raw") + profile;
        ASSERT_EQ(run({"frames", clipPath(), "--range", "1:4:3", "--format", "yuy2", "--raw", "--out", out,
                       "--profile", profile}),
                  kSuccess);
        for (const std::uint32_t index : {1u, 4u}) {
            const auto expected = clips::yuy2Picture(index);
            const std::string name = "YUYV_422_8u_601_00000" + std::to_string(index) + ".raw";
            const std::string bytes = readFile(
                folder / (std::string("raw") + profile) /
                std::filesystem::path(u8"cl\u00EFp \u2603_" + std::u8string(name.begin(), name.end())));
            EXPECT_EQ(std::vector<std::uint8_t>(bytes.begin(), bytes.end()), expected)
                << profile << " " << index;
        }
    }
}

TEST_F(ImporterHost, PicturesOfEveryOfferedFormatAndASheetAreWritten) {
    ASSERT_EQ(run({"frames", clipPath(), "--range", "all", "--format", "all", "--out", in(u8"png"), "--sheet",
                   in(u8"sh\u00E9et.png")}),
              kSuccess);
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder / "png")) {
        EXPECT_EQ(readFile(entry.path()).substr(0, 8), "\x89PNG\r\n\x1A\n");
        ++files;
    }
    EXPECT_EQ(files, 5u * 4u);
    EXPECT_EQ(readFile(folder / std::u8string_view(u8"sh\u00E9et.png")).substr(0, 8), "\x89PNG\r\n\x1A\n");
}

TEST_F(ImporterHost, TheWavHoldsEverySampleFrameWithItsLoudspeakers) {
    ASSERT_EQ(run({"audio", clipPath(), "--out", in(u8"a.wav"), "--waveform", in(u8"a.png")}), kSuccess);
    const std::string wav = readFile(folder / "a.wav");
    const std::uint32_t frames = 5 * clips::kSamplesPerFrame;
    const auto header = wavHeader(2, clips::kSampleRate, 3, frames);
    ASSERT_EQ(wav.size(), header->size() + std::size_t{frames} * 2 * sizeof(float));
    EXPECT_EQ(wav.substr(0, header->size()), std::string(header->begin(), header->end()));
    for (std::uint32_t n = 0; n < frames; ++n) {
        float samples[2];
        std::memcpy(samples, wav.data() + header->size() + std::size_t{n} * sizeof samples, sizeof samples);
        ASSERT_EQ(samples[0], static_cast<float>(n) / 32768.0F) << n;
        ASSERT_EQ(samples[1], -static_cast<float>(n) / 32768.0F) << n;
    }
    EXPECT_EQ(readFile(folder / "a.png").substr(0, 8), "\x89PNG\r\n\x1A\n");
}

TEST_F(ImporterHost, EveryPatternPlaysIdenticalFramesAsynchronously) {
    for (const char* pattern : {"sequential", "scrub", "reverse", "random"}) {
        EXPECT_EQ(run({"async", clipPath(), "--ahead", "3", "--pattern", pattern}), kSuccess) << pattern;
    }
    EXPECT_EQ(run({"async", clipPath(), "--ahead", "0", "--format", "uyvy", "--profile", "older"}), kSuccess);
}

#ifndef _WIN32
// On Windows the log goes to the user's real profile, which a test leaves alone.
TEST_F(ImporterHost, TheLogIsWrittenOnlyWhenAskedFor) {
    std::filesystem::create_directories(folder / "profile");
    const orvantis::test::ScopedEnvironment profile("ORVANTIS_TEST_PROFILE", in(u8"profile"));
    ASSERT_EQ(run({"info", clipPath(), "--out", in(u8"info.txt")}), kSuccess);
    EXPECT_FALSE(std::filesystem::exists(folder / "profile" / "orvantis"));
    ASSERT_EQ(run({"--log", "info", clipPath(), "--out", in(u8"info.txt")}), kSuccess);
    std::size_t logs = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder / "profile" / "orvantis" / "adobe")) {
        EXPECT_NE(readFile(entry.path()).find("[imShutdown] (1)"), std::string::npos);
        ++logs;
    }
    EXPECT_EQ(logs, 1u);
}
#endif

}  // namespace
}  // namespace simhost::tool
