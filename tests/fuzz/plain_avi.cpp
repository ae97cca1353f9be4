#include "tests/fuzz/plain_avi.h"

#include <algorithm>
#include <cstddef>

#include "avi/four_char_code.h"

namespace fuzz {

namespace {

using orvantis::riffCode;

std::size_t countOf(const ChunkNode& list, std::uint32_t code) {
    return static_cast<std::size_t>(
        std::count_if(list.children.begin(), list.children.end(),
                      [&](const ChunkNode& node) { return (node.isList ? node.type : node.id) == code; }));
}

bool isPlainStream(const ChunkNode& strl) {
    if (strl.children.size() < 2 || strl.children[0].id != riffCode("strh") ||
        strl.children[1].id != riffCode("strf") || countOf(strl, riffCode("strh")) != 1 ||
        countOf(strl, riffCode("strf")) != 1 || countOf(strl, riffCode("indx")) > 1) {
        return false;
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
    for (std::size_t i = 1; i < hdrl.children.size(); ++i) {
        const ChunkNode& node = hdrl.children[i];
        const bool known = node.isList ? node.type == riffCode("strl") || node.type == riffCode("odml")
                                       : node.id == riffCode("JUNK");
        if (!known || (node.isList && node.id != riffCode("LIST"))) {
            return false;
        }
        if (node.type == riffCode("strl") && !isPlainStream(node)) {
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
        return (first >= '0' && first <= '9') || first == 'i' || node.id == riffCode("JUNK");
    });
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
        if (place >= 3 || code != kOrder[place] || node.id == riffCode("RIFF")) {
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
