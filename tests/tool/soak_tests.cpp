// The judge of endurance runs: what it calls growth, what it reads from the codec library's list, what it
// draws.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
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
    for (std::size_t i = 0; i < count; ++i) {
        out.push_back(first + step * static_cast<double>(i));
    }
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
    for (std::size_t i = 0; i < values.size(); i += 2) {
        values[i] += 30;
    }
    const Growth growth = judgeGrowth(values, 4, 0.02);
    EXPECT_TRUE(growth.judged);
    EXPECT_FALSE(growth.grows);
}

TEST(Growth, WhatRisesInTheWarmUpOnlyDoesNotGrow) {
    std::vector<double> values = line(60, 500, 0);
    for (std::size_t i = 0; i < 12; ++i) {
        values[i] = 40.0 * static_cast<double>(i);
    }
    EXPECT_FALSE(judgeGrowth(values, 4, 0.02).grows);
}

TEST(Growth, ASteadyRiseGrowsHoweverSlow) {
    // Of the 47 steps behind 12 values of warm-up, four at each end do not count: 39 of 0.3 make 11.7.
    const Growth growth = judgeGrowth(line(60, 100, 0.3), 4, 0.02);
    EXPECT_NEAR(growth.after - growth.before, 11.7, 1e-9);
    EXPECT_NEAR(growth.limit, 4 + 0.02 * growth.before, 1e-9);
    EXPECT_TRUE(growth.grows);
}

TEST(Growth, TheLimitItselfIsAllowed) {
    EXPECT_FALSE(judgeGrowth(line(60, 0, 1), 39, 0).grows);
    EXPECT_TRUE(judgeGrowth(line(60, 0, 1), 38.9, 0).grows);
}

TEST(Growth, AFewJumpsDoNotGrow) {
    std::vector<double> values = line(60, 100, 0);
    for (const std::size_t jump : {20U, 33U, 50U}) {
        for (std::size_t i = jump; i < values.size(); ++i) {
            values[i] += 500;
        }
    }
    EXPECT_FALSE(judgeGrowth(values, 4, 0.02).grows);
}

TEST(Growth, WhatEndsInTheFirstHalfDoesNotGrow) {
    std::vector<double> values = line(60, 100, 1);
    std::fill(values.begin() + 36, values.end(), values[35]);
    EXPECT_FALSE(judgeGrowth(values, 4, 0.02).grows);
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
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i].handles += i;
    }
    const SoakVerdict verdict = judgeSamples(samples);
    EXPECT_TRUE(verdict.handles.grows);
    EXPECT_FALSE(verdict.memory.grows);
    EXPECT_FALSE(verdict.good());
    EXPECT_EQ(verdictText(verdict), "handles grow: from 112.0 to 157.0, 26.2 more are allowed\n");
}

TEST(Verdict, HalfAMebibyteASampleIsFound) {
    auto samples = calmRun(60);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i].privateBytes += i * kMebibyte / 2;
    }
    const SoakVerdict verdict = judgeSamples(samples);
    EXPECT_TRUE(verdict.memory.grows);
    EXPECT_FALSE(verdict.good());
    EXPECT_NE(verdictText(verdict).find("private bytes grow: from "), std::string::npos);
}

// Runs of a minute each over a clip of 320 x 240, one sample a second, none with a leak: private bytes in
// MiB.
std::vector<std::vector<double>> runsWithoutLeak() {
    return {
        {60.07, 60.11, 60.12, 60.12, 60.12, 60.12, 60.12, 60.12, 60.12, 60.12, 60.12, 60.12, 60.12, 60.13,
         60.32, 60.32, 60.32, 60.32, 60.32, 60.32, 60.32, 60.32, 64.19, 64.19, 64.19, 64.19, 64.19, 64.20,
         64.20, 64.20, 64.20, 64.20, 64.20, 64.21, 64.21, 64.21, 64.21, 64.21, 64.21, 64.21, 64.21, 64.21,
         64.21, 64.21, 64.21, 64.21, 64.21, 64.21, 64.21, 64.21, 64.21, 64.21, 64.21, 64.21, 64.21, 64.21},
        {52.91, 52.95, 52.96, 52.97, 52.97, 52.97, 52.97, 59.25, 59.25, 59.25, 59.25, 59.25, 59.25, 59.25,
         59.25, 59.25, 59.25, 59.25, 59.25, 64.61, 64.61, 64.61, 64.61, 64.61, 64.61, 64.61, 64.61, 64.61,
         64.61, 64.61, 64.61, 64.61, 64.61, 64.61, 64.61, 64.62, 64.62, 64.62, 64.62, 64.62, 64.62, 64.62,
         64.62, 64.62, 64.62, 64.62, 64.62, 64.62, 64.62, 64.62, 64.62, 64.62, 64.62, 64.62, 64.62},
        {55.24, 60.58, 60.59, 60.59, 60.59, 60.59, 60.59, 60.59, 60.59, 64.46, 64.46, 64.47, 64.47, 64.47,
         64.47, 64.47, 64.47, 64.47, 64.47, 64.47, 64.47, 64.47, 64.47, 64.47, 64.47, 66.40, 66.41, 66.41,
         66.42, 66.43, 66.43, 66.43, 66.44, 66.44, 66.45, 66.45, 66.45, 66.46, 66.46, 66.46, 66.47, 66.47,
         66.47, 66.47, 66.47, 66.47, 72.10, 72.10, 72.10, 72.10, 72.10, 72.10, 72.10, 72.10, 72.10}};
}

std::vector<SoakSample> samplesOf(const std::vector<double>& mebibytes) {
    std::vector<SoakSample> out = calmRun(mebibytes.size());
    for (std::size_t i = 0; i < out.size(); ++i) {
        out[i].privateBytes = static_cast<std::uint64_t>(mebibytes[i] * kMebibyte);
        out[i].heapBytes = 400'000 + 200 * i;
        out[i].frames = 200 * i;
    }
    return out;
}

TEST(Verdict, TheWarmUpOfRealRunsIsNoLeak) {
    for (const auto& run : runsWithoutLeak()) {
        const SoakVerdict verdict = judgeSamples(samplesOf(run));
        EXPECT_TRUE(verdict.judged());
        EXPECT_EQ(verdictText(verdict), "");
    }
}

// The system's pool starts threads in the middle of the run.
TEST(Verdict, ThreadsThatStartLateAreNoLeak) {
    std::vector<SoakSample> samples = calmRun(49);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i].handles = i < 26 ? 100 : i < 29 ? 120 : 144;
    }
    EXPECT_FALSE(judgeSamples(samples).handles.grows);
}

TEST(Verdict, SixtyFourBytesAFrameAreFoundInRealRuns) {
    for (const auto& run : runsWithoutLeak()) {
        std::vector<SoakSample> samples = samplesOf(run);
        for (SoakSample& sample : samples) {
            sample.heapBytes += 64 * sample.frames;
        }
        const SoakVerdict verdict = judgeSamples(samples);
        EXPECT_TRUE(verdict.heap.grows);
        EXPECT_FALSE(verdict.good());
        EXPECT_NE(verdictText(verdict).find("allocated bytes grow: from "), std::string::npos);
    }
}

TEST(Verdict, TooFewFramesAreNotJudged) {
    std::vector<SoakSample> samples = samplesOf(runsWithoutLeak().front());
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i].frames = i;
    }
    const SoakVerdict verdict = judgeSamples(samples);
    EXPECT_FALSE(verdict.judged());
    EXPECT_TRUE(verdict.good());
}

TEST(Verdict, AnythingHeldAtRestIsFoundInEveryKind) {
    for (int kind = 0; kind < 3; ++kind) {
        auto samples = calmRun(5);
        if (kind == 0) {
            samples[3].hostObjects = 1;
        }
        if (kind == 1) {
            samples[3].codecSessions = 1;
        }
        if (kind == 2) {
            samples[3].hostSuites = 2;
        }
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

// The ratio of a colour "#rrggbb" to white, as those who measure readability define it.
double contrastToWhite(const std::string& colour) {
    double light = 0.0;
    const double weights[] = {0.2126, 0.7152, 0.0722};
    for (std::size_t i = 0; i < 3; ++i) {
        const double level = std::stoi(colour.substr(1 + 2 * i, 2), nullptr, 16) / 255.0;
        light += weights[i] * (level <= 0.03928 ? level / 12.92 : std::pow((level + 0.055) / 1.055, 2.4));
    }
    return 1.05 / (light + 0.05);
}

std::string longColour(std::string colour) {
    return colour.size() != 4 ? colour : std::string{'#',       colour[1], colour[1], colour[2],
                                                     colour[2], colour[3], colour[3]};
}

TEST(SoakPlot, EveryTextAndEveryCourseStandsOutFromTheGround) {
    const std::string plot = soakPlot("title", calmRun(7));
    std::size_t colours = 0;
    for (const std::string mark : {"<text ", "<polyline "}) {
        const std::string attribute = mark == "<text " ? "fill=\"" : "stroke=\"";
        for (std::size_t at = plot.find(mark); at != std::string::npos; at = plot.find(mark, at + 1)) {
            const std::size_t begin = plot.find(attribute, at) + attribute.size();
            const std::string colour = longColour(plot.substr(begin, plot.find('"', begin) - begin));
            EXPECT_GE(contrastToWhite(colour), 4.5) << colour;
            ++colours;
        }
    }
    EXPECT_GT(colours, 16U);
}

TEST(SoakTable, HeadAndRowsAreEquallyWide) {
    EXPECT_EQ(soakTableHead().size(), soakTableRow(calmRun(1).front()).size());
}

}  // namespace
}  // namespace simhost::tool
