#include "tests/fuzz/plain_avi.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "avi/avi_structs.h"
#include "avi/four_char_code.h"

namespace fuzz {

namespace {

using orvantis::riffCode;

std::size_t countOf(const ChunkNode& list, std::uint32_t code) {
    return static_cast<std::size_t>(
        std::count_if(list.children.begin(), list.children.end(),
                      [&](const ChunkNode& node) { return (node.isList ? node.type : node.id) == code; }));
}

// The number in a chunk's code, as 1 of "01wb" and "ix01".
bool isOfStream(std::uint64_t code, std::size_t stream) {
    return (code & 0xFFU) == '0' + stream / 10 && (code >> 8 & 0xFFU) == '0' + stream % 10;
}

// Of chunks, or of such indexes, with the rest of the header as the documents have it. It says whose chunks
// it has; some readers go by that, others by where it stands.
bool isPlainIndex(const Bytes& index, std::size_t stream) {
    return index.size() >= 24 && index[2] == 0 && isOfStream(numberAt(index, 8, 4), stream) &&
           ((index[3] == orvantis::kIndexOfIndexes && numberAt(index, 0, 2) == 4 &&
             numberAt(index, 12, 8) == 0 && numberAt(index, 20, 4) == 0) ||
            (index[3] == orvantis::kIndexOfChunks && numberAt(index, 0, 2) == 2));
}

bool belongsToAStream(const ChunkNode& node) {
    constexpr std::uint32_t kCodes[] = {riffCode("strh"), riffCode("strf"), riffCode("strd"),
                                        riffCode("strn"), riffCode("indx"), riffCode("vprp"),
                                        riffCode("JUNK")};
    return !node.isList && std::find(std::begin(kCodes), std::end(kCodes), node.id) != std::end(kCodes);
}

bool isPlainStream(const ChunkNode& strl, std::size_t number) {
    if (strl.children.size() < 2 || strl.children[0].id != riffCode("strh") ||
        strl.children[1].id != riffCode("strf") || countOf(strl, riffCode("strh")) != 1 ||
        countOf(strl, riffCode("strf")) != 1 || countOf(strl, riffCode("indx")) > 1) {
        return false;
    }
    for (const ChunkNode& node : strl.children) {
        if (!belongsToAStream(node)) {
            return false;
        }
        // Behind one of an odd size other readers go on at its padding byte.
        const bool read =
            node.id == riffCode("strf") || node.id == riffCode("indx") || node.id == riffCode("vprp");
        if (read && node.data.size() % 2 != 0) {
            return false;
        }
        if (node.id == riffCode("indx") && !isPlainIndex(node.data, number)) {
            return false;
        }
    }
    const Bytes& header = strl.children[0].data;
    const Bytes& format = strl.children[1].data;
    if (header.size() != 56) {
        return false;
    }
    const std::uint64_t type = numberAt(header, 0, 4);
    if (type == riffCode("vids")) {
        return format.size() >= 40 && numberAt(format, 0, 4) == 40;
    }
    if (type == riffCode("auds")) {
        return format.size() >= 16;
    }
    return false;
}

bool isPlainHeader(const ChunkNode& hdrl) {
    if (hdrl.children.empty() || hdrl.children[0].id != riffCode("avih") ||
        hdrl.children[0].data.size() != 56 || countOf(hdrl, riffCode("avih")) != 1) {
        return false;
    }
    std::size_t stream = 0;
    for (std::size_t i = 1; i < hdrl.children.size(); ++i) {
        const ChunkNode& node = hdrl.children[i];
        const bool known = node.isList ? node.type == riffCode("strl") || node.type == riffCode("odml")
                                       : node.id == riffCode("JUNK");
        if (!known || (node.isList && node.id != riffCode("LIST"))) {
            return false;
        }
        if (node.type == riffCode("strl") && !isPlainStream(node, stream++)) {
            return false;
        }
        if (node.type == riffCode("odml") &&
            countOf(node, riffCode("dmlh")) + countOf(node, riffCode("JUNK")) != node.children.size()) {
            return false;
        }
    }
    return true;
}

bool isPlainMovi(const ChunkNode& movi) {
    return std::all_of(movi.children.begin(), movi.children.end(), [](const ChunkNode& node) {
        if (node.isList) {
            return node.id == riffCode("LIST") && node.type == riffCode("rec ");
        }
        const std::uint32_t first = node.id & 0xFFU;
        if ((node.id & 0xFFFFU) == (riffCode("ix00") & 0xFFFFU) &&
            !isPlainIndex(node.data, ((node.id >> 16 & 0xFFU) - '0') * 10 + (node.id >> 24) - '0')) {
            return false;
        }
        return (first >= '0' && first <= '9') || first == 'i' || node.id == riffCode("JUNK");
    });
}

// Of whole entries, each for a list or for a stream's frame or sound: palettes are no frames.
bool isPlainOldIndex(const Bytes& index) {
    constexpr std::size_t kEntry = sizeof(orvantis::AviOldIndexEntry);
    for (std::size_t at = 0; at + kEntry <= index.size(); at += kEntry) {
        const auto code = static_cast<std::uint32_t>(numberAt(index, at, 4));
        const auto isDigit = [&](unsigned bits) {
            const std::uint32_t digit = code >> bits & 0xFFU;
            return digit >= '0' && digit <= '9';
        };
        const std::uint32_t kind = code >> 16;
        if (code != riffCode("rec ") && (!isDigit(0) || !isDigit(8) || kind == riffCode("00pc") >> 16)) {
            return false;
        }
    }
    return index.size() % kEntry == 0;
}

}  // namespace

bool isPlain(const ChunkTree& tree) {
    bool whole = tree.root.data.empty() && !tree.root.children.empty();
    forEachChunk(tree.root, [&](const ChunkNode& node) {
        whole = whole && !node.claim && (!node.isList || node.data.empty());
    });
    if (!whole) {
        return false;
    }
    const ChunkNode& form = tree.root.children.front();
    if (form.id != riffCode("RIFF") || form.type != riffCode("AVI ")) {
        return false;
    }
    for (std::size_t i = 1; i < tree.root.children.size(); ++i) {
        const ChunkNode& other = tree.root.children[i];
        if (other.id != riffCode("RIFF") || other.type != riffCode("AVIX")) {
            return false;
        }
    }
    std::uint32_t place = 0;
    for (const ChunkNode& node : form.children) {
        const std::uint32_t code = node.isList ? node.type : node.id;
        if (code == riffCode("JUNK") || code == riffCode("INFO")) {
            continue;
        }
        constexpr std::uint32_t kOrder[] = {riffCode("hdrl"), riffCode("movi"), riffCode("idx1")};
        const bool isIndex = place == 2;
        if (place >= 3 || code != kOrder[place] || node.id == riffCode("RIFF") || node.isList == isIndex) {
            return false;
        }
        if (isIndex && !isPlainOldIndex(node.data)) {
            return false;
        }
        if (place == 0 && !isPlainHeader(node)) {
            return false;
        }
        if (place == 1 && !isPlainMovi(node)) {
            return false;
        }
        ++place;
    }
    return place >= 2;
}

}  // namespace fuzz
