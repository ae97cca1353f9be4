// Excerpts of files that a fuzzer has made: to everything that reads the structure they are the same. Where a
// damaged index reaches into pictures they cannot be, since those go; that is told.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "avi/avi_reader.h"
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
    for (const simhost::tool::FileRange& range : simhost::tool::structureOf(file, [](std::uint64_t) {})) {
        std::copy(bytes.begin() + static_cast<std::ptrdiff_t>(range.begin),
                  bytes.begin() + static_cast<std::ptrdiff_t>(range.end),
                  out.begin() + static_cast<std::ptrdiff_t>(range.begin));
    }
    return out;
}

TEST(ExcerptCorpus, EveryFileReadsTheSameOrItIsTold) {
    const orvantis::test::TempFolder folder;
    const std::string one = orvantis::test::utf8Path(folder / "clip.avi");
    const std::string other = orvantis::test::utf8Path(folder / "excerpt.avi");
    std::size_t files = 0;
    std::size_t told = 0;
    for (const char* corpus : {"corpus/parse_fuzzer", "corpus/session_fuzzer", "regressions"}) {
        for (const auto& each : fs::directory_iterator(fs::path(ORVANTIS_FUZZ_FOLDER) / corpus)) {
            if (each.path().extension() == ".md") {
                continue;
            }
            const std::string bytes = orvantis::test::readFile(each.path());
            const std::string excerpt = excerptOf(bytes);
            orvantis::test::writeFile(folder / "clip.avi", bytes);
            orvantis::test::writeFile(folder / "excerpt.avi", excerpt);
            const auto before = simhost::tool::readAviFacts(one);
            const auto after = simhost::tool::readAviFacts(other);
            ASSERT_EQ(before.has_value(), after.has_value()) << each.path();
            const bool same = !before || simhost::tool::structureDifferences(*before, *after).empty();
            told += same ? 0U : 1U;
            EXPECT_EQ(same, corpusFacts(excerpt) == corpusFacts(bytes)) << each.path();
            ++files;
        }
    }
    EXPECT_GT(files, 500U);
    EXPECT_LT(100 * told, files) << "the odd one";
}

}  // namespace
