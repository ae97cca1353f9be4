#include "tests/fuzz/tree_mutations.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "avi/four_char_code.h"
#include "tests/fuzz/chunk_links.h"

namespace fuzz {

namespace {

using orvantis::riffCode;

// A node and the list that it lies in.
struct Seat {
    ChunkNode* parent;
    std::size_t at;
    ChunkNode& node() const { return parent->children[at]; }
};

void collectSeats(ChunkNode& list, std::vector<Seat>& seats) {
    for (std::size_t i = 0; i < list.children.size(); ++i) {
        seats.push_back({&list, i});
        collectSeats(list.children[i], seats);
    }
}

template <class Wanted>
std::vector<Seat> seatsOf(ChunkTree& tree, const Wanted& wanted) {
    std::vector<Seat> seats;
    collectSeats(tree.root, seats);
    std::erase_if(seats, [&](const Seat& seat) { return !wanted(std::as_const(seat.node())); });
    return seats;
}

std::vector<Seat> allSeats(ChunkTree& tree) {
    return seatsOf(tree, [](const ChunkNode&) { return true; });
}

// Lists that something may be put into, the file itself among them.
std::vector<ChunkNode*> listsOf(ChunkTree& tree) {
    std::vector<ChunkNode*> lists{&tree.root};
    forEachChunk(tree.root, [&](ChunkNode& node) {
        if (node.isList) {
            lists.push_back(&node);
        }
    });
    return lists;
}

void insertSomewhere(ChunkTree& tree, ChunkNode node, Dice& dice) {
    ChunkNode& list = *dice.of(listsOf(tree));
    const std::size_t at = dice.below(list.children.size() + 1);
    list.children.insert(list.children.begin() + static_cast<std::ptrdiff_t>(at), std::move(node));
}

void removeSeat(const Seat& seat) {
    seat.parent->children.erase(seat.parent->children.begin() + static_cast<std::ptrdiff_t>(seat.at));
}

int levelsBelow(const ChunkNode& node) {
    int levels = 0;
    for (const ChunkNode& child : node.children) {
        levels = std::max(levels, levelsBelow(child));
    }
    return levels + (node.isList ? 1 : 0);
}

// Deeper lists would be read as plain data.
bool isTooDeep(const ChunkTree& tree) {
    return levelsBelow(tree.root) > kMostLevels + 1;
}

// Does `change` on a copy, which is kept unless it has become too deep.
template <class Change>
bool within(ChunkTree& tree, const Change& change) {
    ChunkTree changed = tree;
    if (!change(changed) || isTooDeep(changed)) {
        return false;
    }
    tree = std::move(changed);
    return true;
}

constexpr std::array kChunkCodes = {riffCode("avih"), riffCode("strh"), riffCode("strf"), riffCode("strn"),
                                    riffCode("indx"), riffCode("dmlh"), riffCode("idx1"), riffCode("JUNK"),
                                    riffCode("ix00"), riffCode("ix01"), riffCode("00ix"), riffCode("00dc"),
                                    riffCode("00db"), riffCode("01wb"), riffCode("02wb"), riffCode("99dc"),
                                    riffCode("01dc"), riffCode("00wb")};
constexpr std::array kListTypes = {riffCode("hdrl"), riffCode("strl"), riffCode("odml"), riffCode("movi"),
                                   riffCode("rec "), riffCode("AVI "), riffCode("AVIX"), riffCode("INFO")};

// Around what is true, where 32 bits end, and where sums with a header wrap.
std::uint32_t oddNumber(std::uint32_t truth, Dice& dice) {
    constexpr std::array<std::uint32_t, 20> kNumbers = {
        0,          1,          2,          3,          7,          8,          12,
        23,         24,         100,        65'535,     65'536,     0x7FFFFFFF, 0x80000000,
        0xFFFFFFF0, 0xFFFFFFF6, 0xFFFFFFF7, 0xFFFFFFF8, 0xFFFFFFFE, 0xFFFFFFFF};
    constexpr std::array<std::uint32_t, 8> kSteps = {1, 2, 3, 4, 8, 16, 24, 256};
    switch (dice.below(4)) {
        case 0:
            return truth + dice.of(kSteps);
        case 1:
            return truth - dice.of(kSteps);
        case 2:
            return static_cast<std::uint32_t>(dice.next()) >> dice.below(32);
        default:
            return dice.of(kNumbers);
    }
}

// The same as a value of any width, with the 64-bit ends.
std::uint64_t oddWideNumber(std::uint64_t truth, Dice& dice) {
    switch (dice.below(6)) {
        case 0:
            return 0 - std::uint64_t{1} - dice.below(16);
        case 1:
            return (std::uint64_t{1} << 63) + dice.below(16) - 8;
        case 2:
            return truth + (std::uint64_t{1} << 32);
        default:
            return oddNumber(static_cast<std::uint32_t>(truth), dice);
    }
}

// ---- sizes and codes

bool claimSize(ChunkTree& tree, Dice& dice) {
    const std::vector<Seat> seats = allSeats(tree);
    if (seats.empty()) {
        return false;
    }
    ChunkNode& node = dice.of(seats).node();
    const auto truth = static_cast<std::uint32_t>(bytesOf(node, true) - 8);
    node.claim = oddNumber(truth, dice);
    return true;
}

bool trueSizes(ChunkTree& tree, Dice&) {
    bool changed = false;
    forEachChunk(tree.root, [&](ChunkNode& node) {
        changed = changed || node.claim.has_value();
        node.claim.reset();
    });
    return changed;
}

bool changeCode(ChunkTree& tree, Dice& dice) {
    const auto seats = seatsOf(tree, [](const ChunkNode& node) { return !node.isList; });
    if (seats.empty()) {
        return false;
    }
    ChunkNode& node = dice.of(seats).node();
    if (dice.oneIn(2)) {
        node.id = dice.of(kChunkCodes);
    } else {
        // Another stream's chunk.
        node.id = (node.id & 0xFFFF0000U) | static_cast<std::uint32_t>('0' + dice.below(3)) << 8 | '0';
    }
    return true;
}

bool changeType(ChunkTree& tree, Dice& dice) {
    const auto seats = seatsOf(tree, [](const ChunkNode& node) { return node.isList; });
    if (seats.empty()) {
        return false;
    }
    ChunkNode& node = dice.of(seats).node();
    if (dice.oneIn(4)) {
        node.id = node.id == riffCode("RIFF") ? riffCode("LIST") : riffCode("RIFF");
    }
    node.type = dice.of(kListTypes);
    return true;
}

// ---- the tree's shape

bool moveChunk(ChunkTree& tree, Dice& dice) {
    return within(tree, [&](ChunkTree& changed) {
        const std::vector<Seat> seats = allSeats(changed);
        if (seats.empty()) {
            return false;
        }
        const Seat seat = dice.of(seats);
        ChunkNode node = std::move(seat.node());
        removeSeat(seat);
        insertSomewhere(changed, std::move(node), dice);
        return true;
    });
}

bool duplicateChunk(ChunkTree& tree, Dice& dice) {
    return within(tree, [&](ChunkTree& changed) {
        const std::vector<Seat> seats = allSeats(changed);
        if (seats.empty()) {
            return false;
        }
        const Seat seat = dice.of(seats);
        ChunkNode copy = seat.node();
        renumber(changed, copy);
        if (dice.oneIn(2)) {
            insertSomewhere(changed, std::move(copy), dice);
        } else {
            seat.parent->children.insert(seat.parent->children.begin() + static_cast<std::ptrdiff_t>(seat.at),
                                         std::move(copy));
        }
        return true;
    });
}

bool removeChunk(ChunkTree& tree, Dice& dice) {
    const std::vector<Seat> seats = allSeats(tree);
    if (seats.empty()) {
        return false;
    }
    removeSeat(dice.of(seats));
    return true;
}

bool swapChunks(ChunkTree& tree, Dice& dice) {
    std::vector<ChunkNode*> lists = listsOf(tree);
    std::erase_if(lists, [](const ChunkNode* list) { return list->children.size() < 2; });
    if (lists.empty()) {
        return false;
    }
    ChunkNode& list = *dice.of(lists);
    const std::size_t at = dice.below(list.children.size() - 1);
    std::swap(list.children[at], list.children[at + 1 + dice.below(list.children.size() - at - 1)]);
    return true;
}

bool wrapChunks(ChunkTree& tree, Dice& dice) {
    return within(tree, [&](ChunkTree& changed) {
        std::vector<ChunkNode*> lists = listsOf(changed);
        std::erase_if(lists, [](const ChunkNode* list) { return list->children.empty(); });
        if (lists.empty()) {
            return false;
        }
        ChunkNode& list = *dice.of(lists);
        const std::size_t first = dice.below(list.children.size());
        const std::size_t count = 1 + dice.below(list.children.size() - first);
        const auto begin = list.children.begin() + static_cast<std::ptrdiff_t>(first);
        ChunkNode wrap;
        wrap.id = riffCode("LIST");
        wrap.type = dice.of(kListTypes);
        wrap.isList = true;
        wrap.number = changed.nextNumber++;
        wrap.children.assign(begin, begin + static_cast<std::ptrdiff_t>(count));
        list.children.erase(begin, begin + static_cast<std::ptrdiff_t>(count));
        list.children.insert(list.children.begin() + static_cast<std::ptrdiff_t>(first), std::move(wrap));
        return true;
    });
}

bool unwrapList(ChunkTree& tree, Dice& dice) {
    const auto seats =
        seatsOf(tree, [](const ChunkNode& node) { return node.isList && !node.children.empty(); });
    if (seats.empty()) {
        return false;
    }
    const Seat seat = dice.of(seats);
    const std::vector<ChunkNode> children = std::move(seat.node().children);
    removeSeat(seat);
    seat.parent->children.insert(seat.parent->children.begin() + static_cast<std::ptrdiff_t>(seat.at),
                                 children.begin(), children.end());
    return true;
}

// The second half of movi goes into a form of its own, as in files beyond the first gigabytes.
bool splitForm(ChunkTree& tree, Dice& dice) {
    ChunkNode* const movi = findList(tree, riffCode("movi"));
    if (movi == nullptr || movi->children.empty()) {
        return false;
    }
    const std::size_t kept = dice.below(movi->children.size());
    const auto from = movi->children.begin() + static_cast<std::ptrdiff_t>(kept);
    ChunkNode rest;
    rest.id = riffCode("LIST");
    rest.type = riffCode("movi");
    rest.isList = true;
    rest.number = tree.nextNumber++;
    rest.children.assign(from, movi->children.end());
    movi->children.erase(from, movi->children.end());
    ChunkNode form;
    form.id = riffCode("RIFF");
    form.type = riffCode("AVIX");
    form.isList = true;
    form.number = tree.nextNumber++;
    form.children.push_back(std::move(rest));
    tree.root.children.push_back(std::move(form));
    return true;
}

bool insertChunk(ChunkTree& tree, Dice& dice) {
    return within(tree, [&](ChunkTree& changed) {
        ChunkNode node;
        node.number = changed.nextNumber++;
        if (dice.oneIn(4)) {
            node.id = riffCode("LIST");
            node.type = dice.of(kListTypes);
            node.isList = true;
        } else {
            node.id = dice.of(kChunkCodes);
            node.data.resize(dice.below(80), static_cast<std::uint8_t>(dice.next()));
        }
        insertSomewhere(changed, std::move(node), dice);
        return true;
    });
}

bool resizeData(ChunkTree& tree, Dice& dice) {
    const auto seats = seatsOf(tree, [](const ChunkNode& node) { return !node.isList; });
    if (seats.empty()) {
        return false;
    }
    Bytes& data = dice.of(seats).node().data;
    const std::size_t before = data.size();
    switch (dice.below(4)) {
        case 0:
            data.clear();
            break;
        case 1:
            data.resize(dice.below(before + 1));
            break;
        case 2:
            data.resize(before + 1 + dice.below(16));
            break;
        default:
            data.resize(before + dice.below(200), static_cast<std::uint8_t>(dice.next()));
            break;
    }
    return data.size() != before;
}

bool rebuildOldIndex(ChunkTree& tree, Dice& dice) {
    auto seats = seatsOf(tree, [](const ChunkNode& node) { return node.id == riffCode("idx1"); });
    Bytes entries = makeOldIndex(tree);
    if (entries.empty()) {
        return false;
    }
    if (!seats.empty()) {
        dice.of(seats).node().data = std::move(entries);
        return true;
    }
    if (tree.root.children.empty() || !tree.root.children.front().isList) {
        return false;
    }
    ChunkNode node;
    node.id = riffCode("idx1");
    node.number = tree.nextNumber++;
    node.data = std::move(entries);
    tree.root.children.front().children.push_back(std::move(node));
    return true;
}

// ---- what the chunks say

bool isAnyIndex(const ChunkNode& node) {
    return isOpenDmlIndex(node) || (!node.isList && node.id == riffCode("idx1"));
}

std::size_t firstEntryOf(const ChunkNode& node) {
    return node.id == riffCode("idx1") ? 0 : kIndexHeaderBytes;
}

std::size_t entryBytesOf(const ChunkNode& node) {
    return node.id == riffCode("idx1") || isSuperIndex(node.data) ? 16 : 8;
}

bool changeIndexEntry(ChunkTree& tree, Dice& dice) {
    const auto seats = seatsOf(tree, [](const ChunkNode& node) {
        return isAnyIndex(node) && node.data.size() >= firstEntryOf(node) + entryBytesOf(node);
    });
    if (seats.empty()) {
        return false;
    }
    ChunkNode& node = dice.of(seats).node();
    const std::size_t entryBytes = entryBytesOf(node);
    const std::size_t count = (node.data.size() - firstEntryOf(node)) / entryBytes;
    const std::size_t at =
        firstEntryOf(node) + dice.below(count) * entryBytes + 4 * dice.below(entryBytes / 4);
    if (isSuperIndex(node.data) && dice.oneIn(2)) {
        const std::size_t wide = firstEntryOf(node) + dice.below(count) * entryBytes;
        putNumber(node.data, wide, 8, oddWideNumber(numberAt(node.data, wide, 8), dice));
        return true;
    }
    putNumber(node.data, at, 4, oddNumber(static_cast<std::uint32_t>(numberAt(node.data, at, 4)), dice));
    return true;
}

bool changeIndexHeader(ChunkTree& tree, Dice& dice) {
    const auto seats = seatsOf(tree, [](const ChunkNode& node) {
        return isOpenDmlIndex(node) && node.data.size() >= kIndexHeaderBytes;
    });
    if (seats.empty()) {
        return false;
    }
    Bytes& data = dice.of(seats).node().data;
    switch (dice.below(5)) {
        case 0:
            putNumber(data, 0, 2, dice.oneIn(2) ? dice.below(6) : dice.next() & 0xFFFFU);
            break;
        case 1:
            putNumber(data, 3, 1, dice.oneIn(2) ? dice.below(3) : dice.next() & 0xFFU);
            break;
        case 2:
            putNumber(data, 8, 4, dice.of(kChunkCodes));
            break;
        case 3:
            putNumber(data, kIndexBaseAt, 8, oddWideNumber(numberAt(data, kIndexBaseAt, 8), dice));
            break;
        default:
            putNumber(data, 4, 4, oddNumber(static_cast<std::uint32_t>(numberAt(data, 4, 4)), dice));
            break;
    }
    return true;
}

// An entry twice, away, or in another place.
bool shuffleIndexEntries(ChunkTree& tree, Dice& dice) {
    const auto seats = seatsOf(tree, [](const ChunkNode& node) {
        return isAnyIndex(node) && node.data.size() >= firstEntryOf(node) + 2 * entryBytesOf(node);
    });
    if (seats.empty()) {
        return false;
    }
    ChunkNode& node = dice.of(seats).node();
    const std::size_t bytes = entryBytesOf(node);
    const std::size_t count = (node.data.size() - firstEntryOf(node)) / bytes;
    const auto entry = [&](std::size_t number) {
        return node.data.begin() + static_cast<std::ptrdiff_t>(firstEntryOf(node) + number * bytes);
    };
    const auto width = static_cast<std::ptrdiff_t>(bytes);
    std::uint64_t change = 0;
    switch (dice.below(3)) {
        case 0: {
            const auto from = entry(dice.below(count));
            const Bytes copy(from, from + width);
            node.data.insert(entry(dice.below(count)), copy.begin(), copy.end());
            change = 1;
            break;
        }
        case 1: {
            const auto from = entry(dice.below(count));
            node.data.erase(from, from + width);
            change = 0 - std::uint64_t{1};
            break;
        }
        default: {
            const auto from = entry(dice.below(count));
            std::swap_ranges(from, from + width, entry(dice.below(count)));
            break;
        }
    }
    // The number in use follows, or does not.
    if (isOpenDmlIndex(node) && dice.oneIn(2)) {
        putNumber(node.data, 4, 4, numberAt(node.data, 4, 4) + change);
    }
    return true;
}

struct Field {
    std::uint32_t chunk;
    std::size_t at;
    std::size_t bytes;
};
constexpr std::array kFields = {
    Field{riffCode("avih"), 0, 4}, Field{riffCode("avih"), 12, 4}, Field{riffCode("avih"), 16, 4},
    Field{riffCode("avih"), 24, 4}, Field{riffCode("avih"), 32, 4}, Field{riffCode("avih"), 36, 4},
    Field{riffCode("strh"), 8, 4}, Field{riffCode("strh"), 20, 4}, Field{riffCode("strh"), 24, 4},
    Field{riffCode("strh"), 28, 4}, Field{riffCode("strh"), 32, 4}, Field{riffCode("strh"), 44, 4},
    Field{riffCode("dmlh"), 0, 4},
    // Both formats: BITMAPINFOHEADER and WAVEFORMATEXTENSIBLE.
    Field{riffCode("strf"), 0, 4}, Field{riffCode("strf"), 4, 4}, Field{riffCode("strf"), 8, 4},
    Field{riffCode("strf"), 14, 2}, Field{riffCode("strf"), 16, 4}, Field{riffCode("strf"), 20, 4},
    Field{riffCode("strf"), 0, 2}, Field{riffCode("strf"), 2, 2}, Field{riffCode("strf"), 12, 2},
    Field{riffCode("strf"), 24, 4}};
constexpr std::array kVideoTags = {riffCode("O8Y2"), riffCode("O8RA"), riffCode("O8RG"),
                                   riffCode("O8Y0"), riffCode("O8G0"), riffCode("O0RG"),
                                   riffCode("O0Y2"), riffCode("O4RG"), riffCode("XVID")};

bool changeHeaderField(ChunkTree& tree, Dice& dice) {
    const auto seats = seatsOf(tree, [](const ChunkNode& node) {
        return !node.isList && !node.data.empty() &&
               std::any_of(kFields.begin(), kFields.end(),
                           [&](const Field& field) { return field.chunk == node.id; });
    });
    if (seats.empty()) {
        return false;
    }
    ChunkNode& node = dice.of(seats).node();
    const Field& any = dice.of(kFields);
    const Field& field =
        any.chunk == node.id ? any : *std::find_if(kFields.begin(), kFields.end(), [&](const Field& other) {
            return other.chunk == node.id;
        });
    if (node.id == riffCode("strf") && dice.oneIn(6)) {
        putNumber(node.data, 16, 4, dice.of(kVideoTags));
        return true;
    }
    const auto truth = static_cast<std::uint32_t>(numberAt(node.data, field.at, field.bytes));
    // Formats and rates have their own small numbers.
    const std::uint64_t value = dice.oneIn(3) ? 1 + dice.below(40) : oddNumber(truth, dice);
    putNumber(node.data, field.at, field.bytes, value);
    return true;
}

bool changeStreamType(ChunkTree& tree, Dice& dice) {
    const auto seats = seatsOf(tree, [](const ChunkNode& node) { return node.id == riffCode("strh"); });
    if (seats.empty()) {
        return false;
    }
    constexpr std::array kTypes = {riffCode("vids"), riffCode("auds"), riffCode("txts")};
    putNumber(dice.of(seats).node().data, 0, 4, dice.of(kTypes));
    return true;
}

bool trueCounts(ChunkTree& tree, Dice&) {
    const ChunkTree before = tree;
    repairCounts(tree);
    return !(before.root == tree.root);
}

constexpr std::array kMutations = {
    TreeMutation{"size", claimSize, false, false},
    TreeMutation{"true sizes", trueSizes, true, false},
    TreeMutation{"code", changeCode, true, true},
    TreeMutation{"type", changeType, true, true},
    TreeMutation{"move", moveChunk, true, true},
    TreeMutation{"duplicate", duplicateChunk, true, true},
    TreeMutation{"remove", removeChunk, true, true},
    TreeMutation{"swap", swapChunks, true, true},
    TreeMutation{"wrap", wrapChunks, true, true},
    TreeMutation{"unwrap", unwrapList, true, true},
    TreeMutation{"split form", splitForm, true, true},
    TreeMutation{"insert", insertChunk, true, true},
    TreeMutation{"resize", resizeData, true, true},
    TreeMutation{"new idx1", rebuildOldIndex, true, true},
    TreeMutation{"index entry", changeIndexEntry, false, true},
    TreeMutation{"index header", changeIndexHeader, false, true},
    TreeMutation{"index order", shuffleIndexEntries, false, true},
    TreeMutation{"header field", changeHeaderField, false, true},
    TreeMutation{"stream type", changeStreamType, false, true},
    TreeMutation{"true counts", trueCounts, false, true},
};

}  // namespace

std::span<const TreeMutation> treeMutations() {
    return kMutations;
}

bool takeChunkFrom(ChunkTree& tree, const ChunkTree& other, Dice& dice) {
    std::vector<const ChunkNode*> offers;
    forEachChunk(other.root, [&](const ChunkNode& node) { offers.push_back(&node); });
    if (offers.empty()) {
        return false;
    }
    return within(tree, [&](ChunkTree& changed) {
        ChunkNode copy = *dice.of(offers);
        renumber(changed, copy);
        const auto equals = seatsOf(changed, [&](const ChunkNode& node) {
            return node.id == copy.id && node.type == copy.type && node.isList == copy.isList;
        });
        if (!equals.empty() && !dice.oneIn(4)) {
            dice.of(equals).node() = std::move(copy);
        } else {
            insertSomewhere(changed, std::move(copy), dice);
        }
        return true;
    });
}

}  // namespace fuzz
