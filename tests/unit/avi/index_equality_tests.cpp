// Indexes that AviReader takes in pieces against the same indexes read whole and listed plainly: for every
// file of the fuzzers' corpora, for hostile files, and for generated indexes each entry, sum, lookup and
// problem is the same.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "avi/avi_index.h"
#include "avi/avi_stream.h"
#include "avi/riff_walk.h"
#include "tests/support/thorough.h"
#include "tests/unit/avi/avi_test_support.h"
#include "tests/unit/avi/hostile_shapes.h"
#include "tests/unit/avi/same_lists.h"
#include "tests/unit/avi/whole_index.h"

namespace orvantis {
namespace {

using test::Bytes;
using test::MemoryFile;
using test::RiffBuilder;
using test::WholeStream;

std::string streamDifference(const WholeStream& expected, const AviStream& actual) {
    if (expected.hasOpenDmlIndex != actual.hasOpenDmlIndex) {
        return "hasOpenDmlIndex";
    }
    if (expected.superIndex.size() != actual.superIndex.size()) {
        return "super index";
    }
    for (std::size_t i = 0; i < expected.superIndex.size(); ++i) {
        if (std::memcmp(&expected.superIndex[i], &actual.superIndex[i], sizeof(AviSuperIndexEntry)) != 0) {
            return "super index entry " + std::to_string(i);
        }
    }
    if (expected.standardIndexes.size() != actual.standardIndexes.size()) {
        return "standard indexes";
    }
    for (std::size_t i = 0; i < expected.standardIndexes.size(); ++i) {
        const StandardIndex& have = actual.standardIndexes[i];
        if (std::memcmp(&expected.standardIndexes[i].header, &have.header, sizeof(have.header)) != 0 ||
            expected.standardIndexes[i].entries.size() != have.entries) {
            return "standard index " + std::to_string(i);
        }
    }
    const std::size_t step = std::max<std::size_t>(expected.entries().size() / 500, 1);
    std::string difference = test::listDifference(expected.openDmlEntries, actual.openDmlEntries, step);
    if (!difference.empty()) {
        return "OpenDML list: " + difference;
    }
    difference = test::listDifference(expected.legacyEntries, actual.legacyEntries, step);
    if (!difference.empty()) {
        return "legacy list: " + difference;
    }
    const auto count = static_cast<std::int64_t>(expected.entries().size());
    for (std::size_t i = 0; i < expected.entries().size(); ++i) {
        if (expected.entries()[i].size != 0) {
            continue;
        }
        for (const std::int64_t frameCount : {count, count / 2}) {
            if (expected.nearestWithData(i, frameCount) != actual.nearestWithData(i, frameCount)) {
                return "neighbour of " + std::to_string(i);
            }
        }
    }
    return "";
}

// The lines of a reader's text that tell of indexes.
std::string indexProblems(const std::string& text) {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size() - 1) + 1;
        if (text.compare(at, 11, "readIndex: ") == 0) {
            result.append(text, at, end - at);
        }
        at = end;
    }
    return result;
}

std::string fileDifference(const Bytes& bytes) {
    MemoryFile file(bytes);
    AviReader reader;
    if (!reader.parse(file, false)) {
        return "";
    }

    MemoryFile again(bytes);
    FileWindow input;
    input.attach(again, bytes.size());
    constexpr std::array kDescend = {riffCode("AVI "), riffCode("hdrl"), riffCode("strl"), riffCode("odml")};
    constexpr std::array kStop = {riffCode("AVI ")};
    std::vector<RiffChunk> tree;
    (void)walk(input, {0, bytes.size()}, {kDescend, kStop}, tree);
    std::vector<WholeStream> streams(reader.streams.size());
    std::string problems;
    test::WholeIndexReader indexes(input, problems);
    const RiffChunk* const hdrl = findList(tree.at(0).children, riffCode("hdrl"));
    std::uint64_t ordinal = 0;
    std::size_t position = 0;
    for (const RiffChunk& list : hdrl->children) {
        if (!list.isListOf(riffCode("strl"))) {
            continue;
        }
        if (position < streams.size() && reader.streams[position]->index == ordinal) {
            streams[position].index = ordinal;
            if (const RiffChunk* const indx = findChunk(list.children, riffCode("indx"))) {
                streams[position].hasOpenDmlIndex =
                    indexes.readOpenDmlIndex(indx->dataPosition(), indx->dataSize(), streams[position]);
            }
            ++position;
        }
        ++ordinal;
    }
    if (position != streams.size()) {
        return "streams";
    }
    test::buildWholeLists(input, findChunk(tree[0].children, riffCode("idx1")),
                          findList(tree[0].children, riffCode("movi")), streams);
    if (reader.errorText().size() < 1'000'000 && problems != indexProblems(reader.errorText())) {
        return "problems:\n" + problems + "but\n" + indexProblems(reader.errorText());
    }
    for (std::size_t i = 0; i < streams.size(); ++i) {
        const std::string difference = streamDifference(streams[i], *reader.streams[i]);
        if (!difference.empty()) {
            return "stream " + std::to_string(i) + ": " + difference;
        }
    }
    return "";
}

TEST(IndexEquality, FilesOfTheFuzzersCorpora) {
    std::size_t files = 0;
    for (const char* const folder : {"corpus/parse_fuzzer", "corpus/session_fuzzer", "regressions"}) {
        for (const auto& item :
             std::filesystem::directory_iterator(std::filesystem::path(ORVANTIS_FUZZ_FOLDER) / folder)) {
            if (!item.is_regular_file()) {
                continue;
            }
            std::ifstream file(item.path(), std::ios::binary);
            const Bytes bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
            EXPECT_EQ(fileDifference(bytes), "") << item.path();
            ++files;
        }
    }
    EXPECT_GT(files, 300U);
}

TEST(IndexEquality, HostileFiles) {
    for (const hostile::Shape& shape : hostile::shapes()) {
        EXPECT_EQ(fileDifference(shape.make(300'000)), "") << shape.name;
    }
}

TEST(IndexEquality, FilesOfTheBuilder) {
    for (const auto kind :
         {test::OpenDml::kNone, test::OpenDml::kStandardIndex, test::OpenDml::kSuperIndex}) {
        for (const int frames : {0, 1, 63, 64, 65, 5000, 9000}) {
            test::AviBuilder avi = test::smallClip(0);
            for (int i = 0; i < frames; ++i) {
                avi.addFilledChunk(0, static_cast<std::uint32_t>(i % 50), 1, i % 12 == 0)
                    .addFilledChunk(1, static_cast<std::uint32_t>(i % 9), 2);
            }
            EXPECT_EQ(fileDifference(avi.openDml(kind).build()), "") << frames;
            EXPECT_EQ(fileDifference(avi.entriesPerStandardIndex(100).build()), "") << frames;
        }
    }
}

// Indexes larger than the buffer that they pass through, with what lies around the borders of its pieces.
TEST(IndexEquality, IndexesOfSeveralPieces) {
    for (const std::uint32_t count : {8187U, 8188U, 8189U, 8190U, 16'376U, 16'377U, 30'000U}) {
        for (const std::uint32_t spare : {0U, 1U, 7U, 8U, 100'000U}) {  // bytes behind the entries in use
            RiffBuilder riff;
            hostile::openHeaders(riff).beginList("LIST", "strl");
            riff.chunk("strh", test::streamHeader("vids")).chunk("strf", Bytes(40)).begin("indx");
            riff.u16(2).u8(0).u8(1).u32(count).code("00dc").u64(77).u32(0);
            for (std::uint32_t i = 0; i < count; ++i) {
                riff.u32(i * 5).u32(i * 7 % 1000);
            }
            riff.fill(spare).end().end().end().beginList("LIST", "movi").end().begin("idx1");
            for (std::uint32_t i = 0; i < count; ++i) {
                riff.code(i % 3 == 0 ? "01wb" : "00dc").u32(i % 2 * 16).u32(i).u32(i);
            }
            const Bytes bytes = riff.fill(spare % 16).end().take();
            EXPECT_EQ(fileDifference(bytes), "") << count << ' ' << spare;
            const test::Parsed parsed(bytes);
            EXPECT_EQ(parsed.stream(0).entries().size(), count);
        }
    }
}

// A super index of several pieces.
TEST(IndexEquality, SuperIndexOfSeveralPieces) {
    for (const std::uint32_t count : {4093U, 4094U, 4095U, 4096U, 9000U}) {
        RiffBuilder riff;
        hostile::openHeaders(riff).beginList("LIST", "strl");
        riff.chunk("strh", test::streamHeader("vids")).chunk("strf", Bytes(40)).begin("indx");
        const std::uint64_t first = riff.position() + 24 + count * 16ULL;
        riff.u16(4).u8(0).u8(0).u32(count).code("00dc").u64(0).u32(0);
        for (std::uint32_t i = 0; i < count; ++i) {
            riff.u64(first + i * 40ULL).u32(40).u32(0);
        }
        for (std::uint32_t i = 0; i < count; ++i) {
            riff.code("ix00").u32(32).u16(2).u8(0).u8(1).u32(1).code("00dc").u64(i * 1000ULL).u32(0);
            riff.u32(i).u32(i % 11);
        }
        const Bytes bytes = riff.end().end().end().take();
        EXPECT_EQ(fileDifference(bytes), "") << count;
        const test::Parsed parsed(bytes);
        EXPECT_TRUE(parsed.stream(0).hasOpenDmlIndex);
        EXPECT_EQ(parsed.stream(0).entries().size(), count);
    }
}

// Index data of one stream, of any kind; `at` is where it will lie, `inner` where super indexes may point to.
void writeIndexData(RiffBuilder& riff, std::mt19937_64& random, const std::vector<std::uint64_t>& inner) {
    const auto below = [&](std::uint64_t limit) { return random() % limit; };
    const std::uint64_t kind = below(12);
    if (kind < 4 && !inner.empty()) {
        const auto count = static_cast<std::uint32_t>(below(5));
        riff.u16(4).u8(0).u8(0).u32(below(20) == 0 ? count + 3 : count).code("00dc").u64(0).u32(0);
        for (std::uint32_t i = 0; i < count; ++i) {
            const std::size_t which = below(inner.size());
            const std::uint64_t end = which + 1 < inner.size() ? inner[which + 1] : riff.position();
            const auto size = static_cast<std::uint32_t>(end - inner[which]);
            riff.u64(inner[which]).u32(below(30) == 0 ? size / 2 : size).u32(0);
        }
        return;
    }
    const auto count = static_cast<std::uint32_t>(below(10) == 0 ? below(300) : below(40));
    const bool odd = below(40) == 0;
    riff.u16(odd ? 3 : 2).u8(0).u8(1).u32(below(20) == 0 ? count + 1 : count).code("00dc");
    riff.u64(below(5) == 0 ? random() : below(8'000'000'000)).u32(0);
    std::uint32_t offset = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        const auto size = static_cast<std::uint32_t>(kind == 11 ? random() : below(4) == 0 ? 0 : below(3000));
        riff.u32(kind == 10 ? static_cast<std::uint32_t>(random()) : offset);
        riff.u32(below(3) == 0 ? size | kStdIndexDeltaFrame : size);
        offset += size;
    }
    riff.fill(below(8) == 0 ? below(20) : 0);
}

// `indexes` counts those that went into the file.
Bytes generatedFile(std::mt19937_64& random, std::size_t& indexes) {
    const auto below = [&](std::uint64_t limit) { return random() % limit; };
    // Index chunks first, so that those of the streams can name them.
    std::vector<std::uint64_t> inner;
    RiffBuilder junk(12 + 8);
    for (std::uint64_t i = below(4); i > 0; --i) {
        inner.push_back(junk.position());
        ++indexes;
        RiffBuilder data(junk.position() + 8);
        writeIndexData(data, random, inner);
        junk.chunk("ix00", data.take());
    }
    RiffBuilder file;
    file.beginList("RIFF", "AVI ").chunk("JUNK", junk.take());
    file.beginList("LIST", "hdrl").begin("avih").fill(56).end();
    const std::uint64_t streams = 1 + below(3);
    for (std::uint64_t i = 0; i < streams; ++i) {
        file.beginList("LIST", "strl").chunk("strh", test::streamHeader("vids")).chunk("strf", Bytes(40));
        if (below(4) != 0) {
            RiffBuilder data(file.position() + 8);
            writeIndexData(data, random, inner);
            file.chunk("indx", data.take());
            ++indexes;
        }
        file.end();
    }
    file.end();
    if (below(20) != 0) {
        file.beginList("LIST", "movi").end();
    }
    if (below(4) != 0) {
        ++indexes;
        file.begin("idx1");
        const std::uint64_t count = below(10) == 0 ? below(400) : below(50);
        const std::uint64_t kind = below(8);
        for (std::uint64_t i = 0; i < count; ++i) {
            const std::array codes = {"00dc", "01wb", "02tx", "xx??", "0:dc"};
            file.code(codes[below(kind < 4 ? 2 : codes.size())]).u32(static_cast<std::uint32_t>(random()));
            file.u32(static_cast<std::uint32_t>(kind == 7 ? random() : i * 1000));
            const bool large = kind == 6 && below(30) == 0;
            file.u32(static_cast<std::uint32_t>(large || kind == 7 ? random()
                                                : below(3) == 0    ? 0
                                                                   : below(900)));
        }
        file.fill(below(6) == 0 ? below(16) : 0).end();
    }
    return file.end().take();
}

TEST(IndexEquality, GeneratedIndexes) {
    const auto wanted =
        static_cast<std::size_t>(test::howMany(test::howManyOfSample(3'000, 20'000), 100'000));
    std::mt19937_64 random(4711);
    std::size_t files = 0;
    std::size_t complete = 0;
    std::size_t fallen = 0;
    for (std::size_t indexes = 0; indexes < wanted; ++files) {
        const Bytes bytes = generatedFile(random, indexes);
        ASSERT_EQ(fileDifference(bytes), "") << files;
        if (files % 20 != 0) {
            continue;
        }
        const test::Parsed parsed(bytes);
        ASSERT_TRUE(parsed.usable);
        const AviStream& stream = parsed.stream(0);
        complete += stream.hasOpenDmlIndex && !stream.entries().empty() ? 1U : 0U;
        fallen += !stream.hasOpenDmlIndex && !stream.entries().empty() ? 1U : 0U;
    }
    EXPECT_GT(complete, files / 20 / 5);
    EXPECT_GT(fallen, files / 20 / 10);
}

}  // namespace
}  // namespace orvantis
