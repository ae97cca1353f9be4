// The judge of endurance runs: what it calls growth, what it reads from the codec library's list, what it
// draws.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/temp_folder.h"
#include "tool/soak/soak_codec_account.h"
#include "tool/soak/soak_plot.h"
#include "tool/soak/soak_samples.h"

namespace simhost::tool {
namespace {

constexpr std::uint64_t kMebibyte = 1024 * 1024;

std::vector<double> line(std::size_t count, double first, double step) {
    std::vector<double> out;
    for (std::size_t i = 0; i < count; ++i) out.push_back(first + step * static_cast<double>(i));
    return out;
}

std::vector<SoakSample> calmRun(std::size_t count) {
    std::vector<SoakSample> out(count);
    for (std::size_t i = 0; i < count; ++i) {
        out[i].seconds = static_cast<double>(i);
        out[i].handles = 100 + i % 3;
        out[i].privateBytes = (80 + i % 2) * kMebibyte;
        out[i].hostSuites = 1;
    }
    return out;
}

TEST(Growth, ALevelThatJittersDoesNotGrow) {
    std::vector<double> values = line(60, 100, 0);
    for (std::size_t i = 0; i < values.size(); i += 2) values[i] += 30;
    const Growth growth = judgeGrowth(values, 4, 0.02);
    EXPECT_TRUE(growth.judged);
    EXPECT_FALSE(growth.grows);
}

TEST(Growth, WhatRisesInTheWarmUpOnlyDoesNotGrow) {
    std::vector<double> values = line(60, 500, 0);
    for (std::size_t i = 0; i < 12; ++i) values[i] = 40.0 * static_cast<double>(i);
    EXPECT_FALSE(judgeGrowth(values, 4, 0.02).grows);
}

TEST(Growth, ASteadyRiseGrowsHoweverSlow) {
    // Behind 12 values of warm-up the thirds have 16 values each, 32 apart: 0.3 a sample makes 9.6.
    const Growth growth = judgeGrowth(line(60, 100, 0.3), 4, 0.02);
    EXPECT_NEAR(growth.after - growth.before, 9.6, 1e-9);
    EXPECT_NEAR(growth.limit, 4 + 0.02 * growth.before, 1e-9);
    EXPECT_TRUE(growth.grows);
}

TEST(Growth, TheLimitItselfIsAllowed) {
    std::vector<double> values = line(60, 100, 0);
    for (std::size_t i = 30; i < 60; ++i) values[i] = 106;  // slack 4 and 2 % of 100
    EXPECT_FALSE(judgeGrowth(values, 4, 0.02).grows);
    for (std::size_t i = 30; i < 60; ++i) values[i] = 106.5;
    EXPECT_TRUE(judgeGrowth(values, 4, 0.02).grows);
}

TEST(Growth, OnePeakAtTheEndDoesNotGrow) {
    std::vector<double> values = line(60, 100, 0);
    values.back() = 1e6;
    EXPECT_FALSE(judgeGrowth(values, 4, 0.02).grows);
}

TEST(Growth, FewSamplesAreNotJudged) {
    EXPECT_FALSE(judgeGrowth(line(kFewestSamples - 1, 0, 1000), 4, 0.02).judged);
    EXPECT_FALSE(judgeGrowth({}, 4, 0.02).judged);
    EXPECT_TRUE(judgeGrowth(line(kFewestSamples, 0, 1000), 4, 0.02).grows);
}

TEST(Verdict, ACalmRunIsGood) {
    const SoakVerdict verdict = judgeSamples(calmRun(60));
    EXPECT_TRUE(verdict.good());
    EXPECT_EQ(verdictText(verdict), "");
    EXPECT_TRUE(judgeSamples({}).good());
}

TEST(Verdict, OneHandleASampleIsFound) {
    auto samples = calmRun(60);
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i].handles += i;
    const SoakVerdict verdict = judgeSamples(samples);
    EXPECT_TRUE(verdict.handles.grows);
    EXPECT_FALSE(verdict.memory.grows);
    EXPECT_FALSE(verdict.good());
    EXPECT_EQ(verdictText(verdict), "handles grow: from 120.5 to 152.5, 26.4 more are allowed\n");
}

TEST(Verdict, HalfAMebibyteASampleIsFound) {
    auto samples = calmRun(60);
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i].privateBytes += i * kMebibyte / 2;
    const SoakVerdict verdict = judgeSamples(samples);
    EXPECT_TRUE(verdict.memory.grows);
    EXPECT_FALSE(verdict.good());
    EXPECT_NE(verdictText(verdict).find("private bytes grow: from "), std::string::npos);
}

TEST(Verdict, AnythingHeldAtRestIsFoundInEveryKind) {
    for (int kind = 0; kind < 3; ++kind) {
        auto samples = calmRun(5);
        if (kind == 0) samples[3].hostObjects = 1;
        if (kind == 1) samples[3].codecSessions = 1;
        if (kind == 2) samples[3].hostSuites = 2;
        const SoakVerdict verdict = judgeSamples(samples);
        EXPECT_FALSE(verdict.restBalanced) << kind;
        EXPECT_FALSE(verdict.good()) << kind;
        EXPECT_NE(verdictText(verdict), "") << kind;
    }
}

TEST(CodecAccount, CountsWhatIsOpenAndNotWhatFailed) {
    const orvantis::test::TempFolder folder;
    CodecAccount account(orvantis::test::utf8Path(folder / "calls.txt"));
    EXPECT_FALSE(account.known());
    orvantis::test::writeFile(folder / "calls.txt",
                              "#1 T1 library_init() = 0\n#2 T1 open(-> 0x10001) = 0\n#3 T1 open() = 1900\n");
    account.update();
    EXPECT_TRUE(account.known());
    EXPECT_EQ(account.initialisations(), 1);
    EXPECT_EQ(account.sessions(), 1);
    EXPECT_FALSE(account.isBalanced());
    EXPECT_FALSE(std::filesystem::exists(folder / "calls.txt")) << "read once";
    orvantis::test::writeFile(folder / "calls.txt",
                              "#4 T2 decompress(0x10001, {6144 bytes}, {pixels,pitch 128,total 6144}) = 0\n"
                              "#5 T2 get_string(2, 1900) = \"injected fault\"\n#6 T1 close(0x10001) = 0\n#7 "
                              "T1 library_close() = 0\n"
                              "#8 T1 unload, library_init not undone: 0, sessions not closed: 0\n");
    account.update();
    EXPECT_TRUE(account.isBalanced());
    EXPECT_EQ(account.calls(), 7u);
    EXPECT_EQ(account.failedCalls(), 1u);
}

TEST(SoakPlot, HasAPointForEachSampleOfEachLine) {
    const std::string plot = soakPlot("a < b", calmRun(7));
    EXPECT_TRUE(plot.starts_with("<svg ") && plot.ends_with("</svg>\n"));
    EXPECT_NE(plot.find("a &lt; b"), std::string::npos);
    std::size_t lines = 0;
    for (std::size_t at = plot.find("points=\""); at != std::string::npos;
         at = plot.find("points=\"", at + 1)) {
        const std::string points = plot.substr(at, plot.find('"', at + 8) - at);
        EXPECT_EQ(std::count(points.begin(), points.end(), ','), 7);
        ++lines;
    }
    EXPECT_EQ(lines, 8u);
}

TEST(SoakTable, HeadAndRowsAreEquallyWide) {
    EXPECT_EQ(soakTableHead().size(), soakTableRow(calmRun(1).front()).size());
}

}  // namespace
}  // namespace simhost::tool
