// What a file may cost, whatever it holds: memory at most 64 MiB + 24 x its size, reading and allocating no
// more than in proportion to its size. Counted, not timed: over the fuzzers' corpora, over what once broke
// something, and over files that are built to cost much. One thread; operator new of this program counts.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "avi/avi_reader.h"
#include "avi/avi_stream.h"
#include "avi/frame_chunk.h"
#include "tests/support/allocation_meter/allocation_meter.h"
#include "tests/support/memory_file.h"
#include "tests/support/temp_folder.h"
#include "tests/unit/avi/hostile_shapes.h"

namespace {

namespace fs = std::filesystem;
using orvantis::AviReader;
using orvantis::test::Bytes;
using orvantis::test::MemoryFile;

constexpr double kMebibyte = 1024.0 * 1024.0;

struct Cost {
    std::uint64_t fileBytes = 0;
    std::uint64_t peakBytes = 0;
    std::uint64_t allocations = 0;
    std::uint64_t reads = 0;
    std::uint64_t bytesRead = 0;
    std::uint64_t operations = 0;  ///< on the file, reads among them
    std::uint64_t largestRead = 0;
};

/// Of one parse, with headers and indexes, and of reading up to 64 frames of each stream behind it. The
/// reading is counted for the parse alone, the memory for both.
Cost costOf(const Bytes& bytes) {
    MemoryFile file(bytes);
    AviReader reader;
    orvantis::FrameChunk chunk;
    orvantis::test::startCounting();
    const bool usable = reader.parse(file, false);
    Cost cost;
    cost.fileBytes = bytes.size();
    cost.allocations = orvantis::test::counted().calls;
    cost.reads = file.counts().reads;
    cost.bytesRead = file.counts().bytesRead;
    cost.operations = file.counts().operations();
    cost.largestRead = file.counts().largestRead;
    for (const auto& stream : reader.streams) {
        const std::size_t count = usable ? stream->entries().size() : 0;
        for (std::size_t i = 0; i < count; i += std::max<std::size_t>(count / 64, 1)) {
            static_cast<void>(
                orvantis::readFrameChunk(file, *stream, i, static_cast<std::int64_t>(count), chunk));
        }
    }
    cost.peakBytes = orvantis::test::counted().peak;
    return cost;
}

/// The bounds, with a constant for what every file costs and a factor for its size. Small reads go through
/// windows of 64 KiB; index chunks are at most S/32 + 1024, their bytes at most 2 S + 1 MiB.
void expectWithinBounds(const Cost& cost, const std::string& name) {
    const std::uint64_t size = cost.fileBytes;
    EXPECT_LE(cost.peakBytes, (std::uint64_t{64} << 20) + 24 * size) << name;
    EXPECT_LE(cost.reads, 1100 + size / 16) << name;
    EXPECT_LE(cost.operations, 4 * (1100 + size / 16)) << name;
    EXPECT_LE(cost.bytesRead, (std::uint64_t{2} << 20) + 8 * size) << name;
    EXPECT_LE(cost.largestRead, std::max<std::uint64_t>(size, 65'536)) << name;
    EXPECT_LE(cost.allocations, 4096 + size / 2) << name;
}

class Bounds : public ::testing::Test {
 protected:
    struct Worst {
        double peakPerByte = 0, readsPerKilobyte = 0, bytesPerByte = 0;
        std::uint64_t peak = 0;

        void take(const Cost& cost) {
            const auto size = static_cast<double>(std::max<std::uint64_t>(cost.fileBytes, 1024));
            peak = std::max(peak, cost.peakBytes);
            peakPerByte = std::max(peakPerByte, static_cast<double>(cost.peakBytes) / size);
            readsPerKilobyte = std::max(readsPerKilobyte, static_cast<double>(cost.reads) * 1024 / size);
            bytesPerByte = std::max(bytesPerByte, static_cast<double>(cost.bytesRead) / size);
        }
        void print(const char* what) const {
            std::printf("    %-48s peak %7.2f MiB, %6.2f x file; %5.2f reads a KiB; %5.2f x file read\n",
                        what, static_cast<double>(peak) / kMebibyte, peakPerByte, readsPerKilobyte,
                        bytesPerByte);
        }
    };
};

TEST_F(Bounds, HoldForEveryFileOfTheCorpora) {
    Worst worst;
    std::size_t files = 0;
    for (const char* folder : {"corpus/parse_fuzzer", "corpus/session_fuzzer", "regressions"}) {
        for (const fs::directory_entry& entry :
             fs::directory_iterator(fs::path(ORVANTIS_FUZZ_FOLDER) / folder)) {
            if (!entry.is_regular_file() || entry.path().extension() == ".md") {
                continue;
            }
            const std::string text = orvantis::test::readFile(entry.path());
            const Cost cost = costOf(Bytes(text.begin(), text.end()));
            expectWithinBounds(cost, entry.path().string());
            worst.take(cost);
            ++files;
        }
    }
    EXPECT_GE(files, 500U) << "the corpora are not there";
    std::printf("    %zu files\n", files);
    worst.print("the most of any");
}

class HostileBounds : public Bounds, public ::testing::WithParamInterface<hostile::Shape> {};

TEST_P(HostileBounds, HoldInEverySize) {
    Worst worst;
    for (const std::uint64_t size : {1'000U, 30'000U, 250'000U, 1'000'000U, 4'000'000U}) {
        const Cost cost = costOf(GetParam().make(size));
        expectWithinBounds(cost, GetParam().name + ", " + std::to_string(size));
        worst.take(cost);
    }
    worst.print(GetParam().name.c_str());
}

TEST_P(HostileBounds, TwiceTheFileCostsAtMostTwiceAsMuch) {
    // A tenth more and what every file costs: windows, tables, a list that has just grown.
    const auto most = [](std::uint64_t before, std::uint64_t fixed) {
        return 2 * before + before / 5 + fixed;
    };
    Cost before = costOf(GetParam().make(500'000));
    for (const std::uint64_t size : {1'000'000U, 2'000'000U, 4'000'000U}) {
        const Cost cost = costOf(GetParam().make(size));
        EXPECT_LE(cost.peakBytes, most(before.peakBytes, 4 << 20)) << size;
        EXPECT_LE(cost.allocations, most(before.allocations, 64)) << size;
        EXPECT_LE(cost.reads, most(before.reads, 64)) << size;
        EXPECT_LE(cost.operations, most(before.operations, 256)) << size;
        EXPECT_LE(cost.bytesRead, most(before.bytesRead, 1 << 20)) << size;
        before = cost;
    }
}

/// A file whose idx1 deals its entries out to that many streams.
MemoryFile dealtOutTo(int streams) {
    orvantis::test::RiffBuilder riff;
    hostile::openHeaders(riff);
    for (int i = 0; i < streams; ++i) {
        riff.beginList("LIST", "strl").chunk("strh", orvantis::test::streamHeader("vids"));
        riff.chunk("strf", Bytes(40)).end();
    }
    riff.end();
    riff.beginList("LIST", "movi").end().begin("idx1");
    for (int i = 0; i < 200'000; ++i) {
        const int stream = i % streams;
        riff.u8(static_cast<std::uint8_t>('0' + stream / 10))
            .u8(static_cast<std::uint8_t>('0' + stream % 10));
        riff.u8('d').u8('c').u32(0).u32(4).u32(8);
    }
    riff.end();
    return MemoryFile(riff.take());
}

/// Seconds of parsing it once. By the wall clock: that of the processor goes by ticks where a limit on it is
/// set.
double parseTime(MemoryFile& file) {
    AviReader reader;
    file.seek(0);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(reader.parse(file, false));
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    std::size_t entries = 0;
    for (const auto& stream : reader.streams) {
        entries += stream->entries().size();
    }
    EXPECT_EQ(entries, 200'000U);
    return seconds.count();
}

TEST_F(Bounds, StreamsDoNotMultiplyTheWorkOfTheLegacyIndex) {
    // Neither memory nor reading shows it. Looking for each entry's stream among all of them takes three
    // times as long and more, going through the list once for each six times. The least that each takes, in
    // turns until the two compare: other programs make single runs many times as long.
    MemoryFile oneStream = dealtOutTo(1);
    MemoryFile manyStreams = dealtOutTo(99);
    double one = 1e9;
    double many = 1e9;
    for (int turn = 0; turn < 5 || (turn < 200 && many >= 2 * one); ++turn) {
        one = std::min(one, parseTime(oneStream));
        many = std::min(many, parseTime(manyStreams));
    }
    std::printf("    99 streams take %.2f times as long as one\n", many / one);
    EXPECT_LT(many, 2 * one);
}

INSTANTIATE_TEST_SUITE_P(Shapes, HostileBounds, ::testing::ValuesIn(hostile::shapes()), [](const auto& test) {
    std::string name = test.param.name;
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == ' ' || c == ','; }, '_');
    return name;
});

}  // namespace
