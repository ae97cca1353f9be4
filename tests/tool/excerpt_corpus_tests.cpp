// Excerpts of files that a fuzzer has made: to everything that reads the structure they are the same, and
// nothing of pictures and sound is left. Where a damaged index reaches into pictures they cannot be the same,
// since those go; that is told.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <vector>

#include "avi/avi_reader.h"
#include "avi/avi_stream.h"
#include "tests/support/memory_file.h"
#include "tests/support/temp_folder.h"
#include "tool/excerpt/excerpt_check.h"
#include "tool/excerpt/structure_map.h"

namespace {

namespace fs = std::filesystem;
using orvantis::test::MemoryFile;

std::string corpusFacts(const std::string& bytes) {
    MemoryFile file(std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()));
    orvantis::AviReader reader;
    const bool usable = reader.parse(file, false);
    std::string out = std::to_string(usable) + " " + reader.errorText();
    const auto add = [&out](std::uint64_t number) { out += ' ' + std::to_string(number); };
    add(reader.mainHeader.dwTotalFrames);
    add(reader.extHeader.dwGrandFrames);
    for (const auto& stream : reader.streams) {
        out += '\n' + std::string(stream->format.begin(), stream->format.end());
        add(stream->header.fccType);
        add(stream->header.dwLength);
        add(stream->header.dwRate);
        add(stream->header.dwScale);
        for (const orvantis::IndexEntry& entry : stream->entries()) {
            add(entry.offset);
            add(entry.size);
            add(entry.keyFrame ? 1 : 0);
        }
    }
    return out;
}

std::string excerptOf(const std::string& bytes) {
    MemoryFile file(std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()));
    std::string out(bytes.size(), '\0');
    const auto structure = simhost::tool::structureOf(file, [](std::uint64_t) {});
    EXPECT_TRUE(std::ranges::all_of(structure, [](const auto& range) { return range.begin < range.end; }));
    EXPECT_EQ(
        std::ranges::adjacent_find(structure, [](const auto& a, const auto& b) { return a.end >= b.begin; }),
        structure.end())
        << "in order and apart";
    for (const simhost::tool::FileRange& range : structure) {
        std::copy(bytes.begin() + static_cast<std::ptrdiff_t>(range.begin),
                  bytes.begin() + static_cast<std::ptrdiff_t>(range.end),
                  out.begin() + static_cast<std::ptrdiff_t>(range.begin));
    }
    return out;
}

constexpr const char* kAviCorpora[] = {"corpus/parse_fuzzer", "corpus/session_fuzzer",
                                       "corpus/differential_fuzzer", "corpus/rescue_fuzzer", "regressions"};

std::vector<fs::path> aviCorpora() {
    std::vector<fs::path> out;
    for (const char* corpus : kAviCorpora) {
        for (const auto& each : fs::directory_iterator(fs::path(ORVANTIS_FUZZ_FOLDER) / corpus)) {
            if (each.path().extension() != ".md") {
                out.push_back(each.path());
            }
        }
    }
    return out;
}

std::uint32_t wordAt(std::string_view bytes, std::size_t at) {
    std::uint32_t out = 0;
    std::memcpy(&out, bytes.data() + at, sizeof out);
    return out;
}

bool isStreamChunk(std::string_view bytes, std::size_t at) {
    const auto digit = [](char c) { return c >= '0' && c <= '9'; };
    const auto letter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    return digit(bytes[at]) && digit(bytes[at + 1]) && letter(bytes[at + 2]) && letter(bytes[at + 3]) &&
           bytes.substr(at + 2, 2) != "ix";
}

// Marks the data of streams, 1, and the headers of their chunks, 2, which are no data wherever they lie.
void markData(std::size_t at, std::size_t end, std::string& marks) {
    const std::size_t data = std::min(at + 8, end);
    for (std::size_t i = data; i < end; ++i) {
        marks[i] = static_cast<char>(marks[i] | 1);
    }
    for (std::size_t i = at; i < data; ++i) {
        marks[i] = static_cast<char>(marks[i] | 2);
    }
}

void markLists(std::string_view bytes, std::size_t at, std::size_t end, bool data, std::string& marks) {
    while (at + 8 <= end) {
        const std::string_view code = bytes.substr(at, 4);
        const std::size_t size = wordAt(bytes, at + 4);
        const std::size_t last = std::min(at + 8 + size, end);
        if ((code == "RIFF" || code == "LIST") && at + 12 <= last) {
            markLists(bytes, at + 12, last, data || bytes.substr(at + 8, 4) == "movi", marks);
        } else if (data && isStreamChunk(bytes, at)) {
            markData(at, last, marks);
        } else if (std::ranges::any_of(code, [](char c) { return c < 0x20 || c > 0x7E; })) {
            return;
        }
        at += 8 + size + size % 2;
    }
}

// By the lists of data, and by every index.
std::string dataMarks(const std::string& bytes) {
    std::string marks(bytes.size(), '\0');
    if (bytes.starts_with("RIFF")) {
        markLists(bytes, 0, bytes.size(), false, marks);
    }
    MemoryFile file(std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()));
    orvantis::AviReader reader;
    (void)reader.parse(file, false);
    for (const auto& stream : reader.streams) {
        for (const orvantis::IndexEntry& entry : stream->entries()) {
            if (entry.offset >= 8 && entry.offset <= bytes.size() &&
                entry.size <= bytes.size() - entry.offset && isStreamChunk(bytes, entry.offset - 8) &&
                wordAt(bytes, entry.offset - 4) == entry.size) {
                markData(entry.offset - 8, entry.offset + entry.size, marks);
            }
        }
    }
    return marks;
}

TEST(ExcerptCorpus, NothingOfPicturesAndSoundIsLeft) {
    std::size_t files = 0;
    std::size_t looked = 0;
    for (const fs::path& path : aviCorpora()) {
        const std::string bytes = orvantis::test::readFile(path);
        const std::string excerpt = excerptOf(bytes);
        const std::string marks = dataMarks(bytes);
        std::size_t data = 0;
        std::size_t left = 0;
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            data += marks[i] == 1 && bytes[i] != '\0' ? 1U : 0U;
            left += marks[i] == 1 && excerpt[i] != '\0' ? 1U : 0U;
        }
        EXPECT_EQ(left, 0U) << path;
        files += data > 0 ? 1U : 0U;
        looked += data;
    }
    EXPECT_GT(files, 80U);
    EXPECT_GT(looked, 80'000U);
}

TEST(ExcerptCorpus, EveryFileReadsTheSameOrItIsTold) {
    const orvantis::test::TempFolder folder;
    const std::string one = orvantis::test::utf8Path(folder / "clip.avi");
    const std::string other = orvantis::test::utf8Path(folder / "excerpt.avi");
    std::size_t files = 0;
    std::size_t told = 0;
    for (const fs::path& path : aviCorpora()) {
        const std::string bytes = orvantis::test::readFile(path);
        const std::string excerpt = excerptOf(bytes);
        orvantis::test::writeFile(folder / "clip.avi", bytes);
        orvantis::test::writeFile(folder / "excerpt.avi", excerpt);
        const auto before = simhost::tool::readAviFacts(one);
        const auto after = simhost::tool::readAviFacts(other);
        ASSERT_EQ(before.has_value(), after.has_value()) << path;
        const bool same = !before || simhost::tool::structureDifferences(*before, *after).empty();
        told += same ? 0U : 1U;
        EXPECT_EQ(same, corpusFacts(excerpt) == corpusFacts(bytes)) << path;
        ++files;
    }
    EXPECT_GT(files, 600U);
    EXPECT_LT(200 * told, files) << "the odd one";
}

}  // namespace
