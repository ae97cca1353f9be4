#include "tests/fuzz/avi_mutator.h"

#include <algorithm>
#include <span>
#include <vector>

#include "tests/fuzz/chunk_links.h"
#include "tests/fuzz/chunk_tree.h"
#include "tests/fuzz/dice.h"
#include "tests/fuzz/tree_mutations.h"

namespace fuzz {

namespace {

constexpr std::size_t kBytesOneIn = 4;   // so often the whole file is handed to the other mutator
constexpr std::size_t kBrokenOneIn = 4;  // so often the indexes keep pointing where the chunks were
constexpr std::size_t kMostMutations = 4;
constexpr std::size_t kGrowsOneIn = 3;  // so often a result may be longer: short inputs run faster
constexpr int kTries = 3;

// The other mutator, on the data of one chunk: the tree around it stays whole.
void mutateData(ChunkTree& tree, Dice& dice, ByteMutator mutateBytes, std::size_t room) {
    std::vector<ChunkNode*> chunks;
    forEachChunk(tree.root, [&](ChunkNode& node) {
        if (!node.isList && !node.data.empty()) {
            chunks.push_back(&node);
        }
    });
    if (chunks.empty()) {
        return;
    }
    Bytes& data = dice.of(chunks)->data;
    const std::size_t size = data.size();
    data.resize(size + std::min<std::size_t>(room, 64));
    data.resize(mutateBytes(data.data(), size, data.size()));
}

void mutateTree(ChunkTree& tree, Dice& dice, ByteMutator mutateBytes, std::size_t room) {
    const std::vector<ChunkLink> links = linksOf(tree);
    const auto table = treeMutations();
    std::vector<const TreeMutation*> chosen;
    for (std::size_t count = 1 + dice.below(kMostMutations); count > 0; --count) {
        chosen.push_back(&dice.of(table));
    }
    bool moved = false;
    for (const TreeMutation* mutation : chosen) {
        if (mutation->movesChunks) {
            moved = mutation->apply(tree, dice) || moved;
        }
    }
    if (dice.oneIn(4)) {
        mutateData(tree, dice, mutateBytes, room);
    }
    if (moved && !dice.oneIn(kBrokenOneIn)) {
        repairLinks(tree, links);
        if (dice.oneIn(2)) {
            repairCounts(tree);
        }
    }
    for (const TreeMutation* mutation : chosen) {
        if (!mutation->movesChunks) {
            mutation->apply(tree, dice);
        }
    }
}

std::size_t put(const Bytes& bytes, std::uint8_t* out) {
    std::copy(bytes.begin(), bytes.end(), out);
    return bytes.size();
}

}  // namespace

std::size_t mutateAvi(std::uint8_t* data, std::size_t size, std::size_t mostBytes, std::uint64_t seed,
                      ByteMutator mutateBytes) {
    Dice dice(seed);
    if (!dice.oneIn(kBytesOneIn)) {
        const std::span<const std::uint8_t> before(data, size);
        const std::size_t room = mostBytes < size ? 0 : mostBytes - size;
        for (int tries = 0; tries < kTries; ++tries) {
            ChunkTree tree = readTree(before);
            if (tree.root.children.empty()) {
                break;
            }
            mutateTree(tree, dice, mutateBytes, room);
            const Bytes after = writeTree(tree);
            const std::size_t most = dice.oneIn(kGrowsOneIn) ? mostBytes : std::min(mostBytes, size);
            if (!after.empty() && after.size() <= most && !std::ranges::equal(before, after)) {
                return put(after, data);
            }
        }
    }
    return mutateBytes(data, size, mostBytes);
}

std::size_t crossAvi(const std::uint8_t* first, std::size_t firstSize, const std::uint8_t* second,
                     std::size_t secondSize, std::uint8_t* out, std::size_t mostBytes, std::uint64_t seed) {
    Dice dice(seed);
    ChunkTree tree = readTree({first, firstSize});
    const ChunkTree other = readTree({second, secondSize});
    const std::vector<ChunkLink> links = linksOf(tree);
    bool changed = false;
    for (std::size_t count = 1 + dice.below(3); count > 0; --count) {
        changed = takeChunkFrom(tree, other, dice) || changed;
    }
    if (!changed) {
        return 0;
    }
    if (!dice.oneIn(kBrokenOneIn)) {
        repairLinks(tree, links);
    }
    const Bytes bytes = writeTree(tree);
    return bytes.size() <= mostBytes ? put(bytes, out) : 0;
}

}  // namespace fuzz
