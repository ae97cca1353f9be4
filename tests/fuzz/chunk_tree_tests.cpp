// The tree of chunks that the mutator works on: nothing of a file is lost in it, and each change of it leaves
// what it promises.
#include "avi/avi_stream.h"
#include "tests/fuzz/chunk_tree.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "avi/avi_reader.h"
#include "avi/riff_walk.h"
#include "tests/fuzz/chunk_links.h"
#include "tests/fuzz/example_files.h"
#include "tests/fuzz/tree_mutations.h"
#include "tests/support/memory_file.h"

namespace fuzz {
namespace {

using orvantis::AviReader;
using orvantis::riffCode;
using orvantis::test::MemoryFile;

Bytes writtenAgain(const Bytes& file) {
    ChunkTree tree = readTree(file);
    return writeTree(tree);
}

bool walksSoundly(const Bytes& file) {
    MemoryFile source{std::span<const std::uint8_t>(file)};
    orvantis::FileWindow window;
    window.attach(source, file.size());
    std::vector<orvantis::RiffChunk> chunks;
    return orvantis::walk(window, {0, file.size()}, {}, chunks);
}

// The bytes of each chunk that a list names, in its order.
std::vector<Bytes> contentsOf(const Bytes& file, const orvantis::ChunkList& list) {
    std::vector<Bytes> contents;
    for (const orvantis::IndexEntry& entry : list) {
        if (entry.offset > file.size() || file.size() - entry.offset < entry.size) {
            return {};
        }
        const auto first = file.begin() + static_cast<std::ptrdiff_t>(entry.offset);
        contents.emplace_back(first, first + entry.size);
    }
    return contents;
}

// Of both indexes of every stream.
std::vector<std::vector<Bytes>> indexedContents(const Bytes& file) {
    MemoryFile source{std::span<const std::uint8_t>(file)};
    AviReader reader;
    if (!reader.parse(source, false)) {
        return {};
    }
    std::vector<std::vector<Bytes>> contents;
    for (const auto& stream : reader.streams) {
        contents.push_back(contentsOf(file, stream->legacyEntries));
        contents.push_back(contentsOf(file, stream->openDmlEntries));
    }
    return contents;
}

TEST(ChunkTree, WritesTheBytesThatItWasReadFrom) {
    for (const Bytes& file : exampleFiles()) {
        EXPECT_EQ(writtenAgain(file), file);
        // Cut anywhere, and with bytes that are no chunks behind and within.
        for (std::size_t size = 0; size <= file.size(); size += 7) {
            const Bytes cut(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size));
            ASSERT_EQ(writtenAgain(cut), cut) << size;
        }
        for (std::size_t at = 0; at < file.size(); at += 5) {
            Bytes broken = file;
            broken[at] = static_cast<std::uint8_t>(broken[at] + 131);
            ASSERT_EQ(writtenAgain(broken), broken) << at;
        }
    }
}

TEST(ChunkTree, KeepsASizeThatIsNotTheTrueOne) {
    const Bytes file = {'J', 'U', 'N', 'K', 200, 0, 0, 0, 1, 2, 3};
    const ChunkTree tree = readTree(file);
    ASSERT_EQ(tree.root.children.size(), 1U);
    EXPECT_EQ(tree.root.children[0].claim, 200U);
    EXPECT_EQ(tree.root.children[0].data, (Bytes{1, 2, 3}));
}

TEST(ChunkTree, TellsTheOffsetsThatItWritesTo) {
    ChunkTree tree = readTree(exampleFiles().back());
    {
        ChunkNode odd;
        odd.id = riffCode("JUNK");
        odd.data = {1, 2, 3};
        tree.root.children.front().children.insert(tree.root.children.front().children.begin(), odd);
    }
    const Bytes file = writeTree(tree);
    EXPECT_EQ(layOut(tree), file.size());
    std::size_t seen = 0;
    forEachChunk(tree.root, [&](const ChunkNode& node) {
        EXPECT_EQ(numberAt(file, static_cast<std::size_t>(node.offset), 4), node.id);
        ++seen;
    });
    EXPECT_GT(seen, 20U);
}

TEST(ChunkLinks, IndexesFollowChunksThatWereMoved) {
    for (const Bytes& file : exampleFiles()) {
        const auto before = indexedContents(file);
        ASSERT_FALSE(before.empty());
        ChunkTree tree = readTree(file);
        const std::vector<ChunkLink> links = linksOf(tree);
        ASSERT_GE(links.size(), 10U);
        ChunkNode junk;
        junk.id = riffCode("JUNK");
        junk.data.resize(101);
        tree.root.children.front().children.insert(tree.root.children.front().children.begin(), junk);
        ChunkNode& movi = *findList(tree, riffCode("movi"));
        movi.children.insert(movi.children.begin() + 1, junk);
        EXPECT_NE(indexedContents(writeTree(tree)), before);
        repairLinks(tree, links);
        EXPECT_EQ(indexedContents(writeTree(tree)), before);
    }
}

TEST(ChunkLinks, ANewOldIndexNamesEveryChunkOfTheMovi) {
    for (const Bytes& file : {exampleFiles()[0], exampleFiles()[1]}) {
        ChunkTree tree = readTree(file);
        Bytes found;
        forEachChunk(tree.root, [&](const ChunkNode& node) {
            if (node.id == riffCode("idx1")) {
                found = node.data;
            }
        });
        EXPECT_EQ(makeOldIndex(tree), found);
    }
}

TEST(TreeMutations, ThoseThatKeepTheTreeAreReadAsWhatTheyMade) {
    for (const TreeMutation& mutation : treeMutations()) {
        if (!mutation.keepsTree) {
            continue;
        }
        std::size_t applied = 0;
        for (const Bytes& example : exampleFiles()) {
            for (std::uint64_t seed = 0; seed < 40; ++seed) {
                Bytes file = example;
                file[48] = 77;  // a wrong number of frames in avih, to be made right
                ChunkTree tree = readTree(file);
                Dice dice(seed);
                if (!mutation.apply(tree, dice)) {
                    ASSERT_TRUE(tree.root == readTree(file).root) << mutation.name;
                    continue;
                }
                ++applied;
                const Bytes written = writeTree(tree);
                ASSERT_TRUE(readTree(written).root == tree.root) << mutation.name << ' ' << seed;
                ASSERT_TRUE(walksSoundly(written)) << mutation.name << ' ' << seed;
            }
        }
        EXPECT_GT(applied, 0U) << mutation.name;
    }
}

TEST(TreeMutations, TheOthersLieAboutSizes) {
    const Bytes file = exampleFiles().front();
    for (const TreeMutation& mutation : treeMutations()) {
        if (mutation.keepsTree) {
            continue;
        }
        ChunkTree tree = readTree(file);
        tree.root.children.front().claim = 1;
        Dice dice(1);
        ASSERT_TRUE(mutation.apply(tree, dice)) << mutation.name;
        std::size_t claims = 0;
        forEachChunk(tree.root, [&](const ChunkNode& node) { claims += node.claim ? 1 : 0; });
        EXPECT_EQ(claims, std::string(mutation.name) == "true sizes" ? 0U : 2U) << mutation.name;
    }
}

TEST(TreeMutations, NumbersStayUnique) {
    for (const TreeMutation& mutation : treeMutations()) {
        for (std::uint64_t seed = 0; seed < 20; ++seed) {
            ChunkTree tree = readTree(exampleFiles().back());
            Dice dice(seed);
            mutation.apply(tree, dice);
            std::multiset<std::uint32_t> numbers;
            forEachChunk(tree.root, [&](const ChunkNode& node) { numbers.insert(node.number); });
            const std::set<std::uint32_t> different(numbers.begin(), numbers.end());
            ASSERT_EQ(different.size(), numbers.size()) << mutation.name;
        }
    }
}

}  // namespace
}  // namespace fuzz
