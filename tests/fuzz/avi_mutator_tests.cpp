// What the fuzzer is given: results that depend on the seed alone, fit where they are written, and are AVI
// files often enough to get behind the headers.
#include "tests/fuzz/avi_mutator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "avi/avi_reader.h"
#include "tests/fuzz/example_files.h"
#include "tests/support/memory_file.h"

namespace fuzz {
namespace {

using Contents = std::vector<std::uint8_t>;

int g_byteMutations = 0;

std::size_t flipFirstByte(std::uint8_t* data, std::size_t size, std::size_t) {
    ++g_byteMutations;
    if (size != 0) {
        data[0] = static_cast<std::uint8_t>(~data[0]);
    }
    return size;
}

std::size_t fillToTheEnd(std::uint8_t* data, std::size_t, std::size_t mostBytes) {
    std::fill(data, data + mostBytes, std::uint8_t{0x41});
    return mostBytes;
}

constexpr std::size_t kGuardBytes = 64;

// With bytes behind the room that have to stay.
Contents mutated(const Contents& file, std::size_t mostBytes, std::uint64_t seed, ByteMutator bytes) {
    Contents storage = file;
    storage.resize(mostBytes);
    storage.resize(mostBytes + kGuardBytes, 0xA5);
    const std::size_t size = mutateAvi(storage.data(), file.size(), mostBytes, seed, bytes);
    EXPECT_LE(size, mostBytes);
    EXPECT_EQ(std::count(storage.begin() + static_cast<std::ptrdiff_t>(mostBytes), storage.end(), 0xA5),
              static_cast<std::ptrdiff_t>(kGuardBytes));
    storage.resize(std::min(size, mostBytes));
    return storage;
}

bool isUsable(const Contents& file) {
    orvantis::test::MemoryFile source{std::span<const std::uint8_t>(file)};
    orvantis::AviReader reader;
    return reader.parse(source, true);
}

TEST(AviMutator, DependsOnTheSeedAlone) {
    for (const Contents& file : exampleFiles()) {
        std::set<Contents> results;
        for (std::uint64_t seed = 0; seed < 100; ++seed) {
            const Contents once = mutated(file, 4 * file.size(), seed, flipFirstByte);
            ASSERT_EQ(once, mutated(file, 4 * file.size(), seed, flipFirstByte)) << seed;
            EXPECT_NE(once, file);
            results.insert(once);
        }
        EXPECT_GT(results.size(), 70U);  // a quarter is left to the other mutator
    }
}

TEST(AviMutator, NeverExceedsTheRoom) {
    for (const Contents& file : exampleFiles()) {
        for (const std::size_t most : {file.size(), file.size() + 1, file.size() + 100}) {
            for (std::uint64_t seed = 0; seed < 200; ++seed) {
                mutated(file, most, seed, fillToTheEnd);
            }
        }
    }
    for (std::uint64_t seed = 0; seed < 50; ++seed) {
        mutated({}, 0, seed, fillToTheEnd);
        mutated({}, 16, seed, fillToTheEnd);
        mutated({'R', 'I', 'F', 'F', 0, 0, 0, 0}, 8, seed, fillToTheEnd);
        mutated(Contents(300, 7), 300, seed, fillToTheEnd);
    }
}

TEST(AviMutator, LeavesAPartToTheOtherMutatorAndAllThatIsNoTree) {
    const Contents file = exampleFiles().front();
    g_byteMutations = 0;
    for (std::uint64_t seed = 0; seed < 400; ++seed) {
        mutated(file, 2 * file.size(), seed, flipFirstByte);
    }
    EXPECT_GT(g_byteMutations, 80);
    EXPECT_LT(g_byteMutations, 280);
    g_byteMutations = 0;
    for (std::uint64_t seed = 0; seed < 20; ++seed) {
        mutated(Contents(64, 1), 64, seed, flipFirstByte);
    }
    EXPECT_EQ(g_byteMutations, 20);
}

TEST(AviMutator, MostResultsAreStillAviFiles) {
    int usable = 0;
    int all = 0;
    for (const Contents& file : exampleFiles()) {
        for (std::uint64_t seed = 0; seed < 200; ++seed) {
            const Contents result = mutated(file, 2 * file.size(), seed, flipFirstByte);
            if (result[0] != file[0]) {
                continue;  // the other mutator's
            }
            ++all;
            if (isUsable(result)) {
                ++usable;
            }
        }
    }
    EXPECT_GT(all, 400);
    EXPECT_GT(usable * 2, all);
}

TEST(AviMutator, CrossingTakesChunksOfTheOtherFile) {
    const std::vector<Contents> files = exampleFiles();
    int found = 0;
    for (std::uint64_t seed = 0; seed < 60; ++seed) {
        Contents out(8192 + kGuardBytes, 0xA5);
        const std::size_t size = crossAvi(files[0].data(), files[0].size(), files[3].data(), files[3].size(),
                                          out.data(), 8192, seed);
        ASSERT_LE(size, 8192U);
        Contents again(8192);
        ASSERT_EQ(crossAvi(files[0].data(), files[0].size(), files[3].data(), files[3].size(), again.data(),
                           8192, seed),
                  size);
        ASSERT_TRUE(
            std::equal(again.begin(), again.begin() + static_cast<std::ptrdiff_t>(size), out.begin()));
        // Only the other one has a list of this type.
        constexpr std::uint8_t kOdml[] = {'o', 'd', 'm', 'l'};
        const auto end = out.begin() + static_cast<std::ptrdiff_t>(size);
        if (std::search(out.begin(), end, std::begin(kOdml), std::end(kOdml)) != end) {
            ++found;
        }
        EXPECT_EQ(std::count(out.begin() + 8192, out.end(), 0xA5), static_cast<std::ptrdiff_t>(kGuardBytes));
    }
    EXPECT_GT(found, 0);
    std::uint8_t small[64];
    EXPECT_EQ(crossAvi(files[0].data(), files[0].size(), files[3].data(), files[3].size(), small, 64, 1), 0U);
}

}  // namespace
}  // namespace fuzz
