#include "tests/fuzz/chunk_links.h"

#include <algorithm>
#include <limits>
#include <unordered_map>

#include "avi/four_char_code.h"

namespace fuzz {

namespace {

using orvantis::riffCode;

constexpr std::uint64_t kHeaderBytes = 8;
constexpr std::uint64_t kDeltaFrame = 0x80000000;
constexpr std::size_t kStandardEntryBytes = 8;
constexpr std::size_t kSuperEntryBytes = 16;
constexpr std::uint32_t kCodeOfIx = static_cast<std::uint32_t>('i') | static_cast<std::uint32_t>('x') << 8;

const ChunkNode* findFirst(const ChunkNode& node, std::uint32_t type) {
    for (const ChunkNode& child : node.children) {
        if (child.isList && child.type == type) {
            return &child;
        }
        if (const ChunkNode* found = findFirst(child, type)) {
            return found;
        }
    }
    return nullptr;
}

std::size_t entriesOf(const Bytes& data, std::size_t entryBytes) {
    return data.size() < kIndexHeaderBytes ? 0 : (data.size() - kIndexHeaderBytes) / entryBytes;
}

using Places = std::unordered_map<std::uint64_t, std::uint32_t>;  // offset of a header to number

class Linker {
 public:
    Linker(const Places& places, std::vector<ChunkLink>& links) : m_places(places), m_links(links) {}

    bool link(ChunkLink::Kind kind, const ChunkNode& index, std::size_t entry, std::uint64_t at,
              bool absolute = false) {
        const auto found = m_places.find(at);
        if (found == m_places.end()) {
            return false;
        }
        m_links.push_back({kind, index.number, entry, found->second, absolute});
        return true;
    }

 private:
    const Places& m_places;
    std::vector<ChunkLink>& m_links;
};

void linkOldIndex(Linker& linker, const ChunkNode& index, std::uint64_t typeOffset) {
    for (std::size_t i = 0; i < index.data.size() / kOldEntryBytes; ++i) {
        const std::uint64_t offset = numberAt(index.data, i * kOldEntryBytes + 8, 4);
        if (!linker.link(ChunkLink::Kind::kOldIndex, index, i, typeOffset + offset)) {
            linker.link(ChunkLink::Kind::kOldIndex, index, i, offset, true);
        }
    }
}

void linkStandardIndex(Linker& linker, const ChunkNode& index) {
    const std::uint64_t base = numberAt(index.data, kIndexBaseAt, 8);
    for (std::size_t i = 0; i < entriesOf(index.data, kStandardEntryBytes); ++i) {
        const std::uint64_t data =
            base + numberAt(index.data, kIndexHeaderBytes + i * kStandardEntryBytes, 4);
        linker.link(ChunkLink::Kind::kStandardIndex, index, i, data - kHeaderBytes);
    }
}

void linkSuperIndex(Linker& linker, const ChunkNode& index) {
    for (std::size_t i = 0; i < entriesOf(index.data, kSuperEntryBytes); ++i) {
        linker.link(ChunkLink::Kind::kSuperIndex, index, i,
                    numberAt(index.data, kIndexHeaderBytes + i * kSuperEntryBytes, 8));
    }
}

// One base for the whole index, ahead of all chunks that it names, so that every offset has room.
void setBase(ChunkNode& index, std::uint64_t base) {
    putNumber(index.data, kIndexBaseAt, 8, base);
}

// Chunks of data: "00dc", "01wb"; not the lists and indexes between them.
bool isData(const ChunkNode& node) {
    const auto digit = [&](int at) {
        const std::uint32_t letter = node.id >> (8 * at) & 0xFFU;
        return letter >= '0' && letter <= '9';
    };
    return !node.isList && digit(0) && digit(1) && !isOpenDmlIndex(node);
}

void appendOldEntries(const ChunkNode& list, std::uint64_t typeOffset, Bytes& bytes) {
    for (const ChunkNode& node : list.children) {
        if (node.isList) {
            appendOldEntries(node, typeOffset, bytes);
        }
        if (!isData(node)) {
            continue;
        }
        const std::size_t at = bytes.size();
        bytes.resize(at + kOldEntryBytes);
        putNumber(bytes, at, 4, node.id);
        putNumber(bytes, at + 4, 4, 0x10);
        putNumber(bytes, at + 8, 4, node.offset - typeOffset);
        putNumber(bytes, at + 12, 4, node.data.size());
    }
}

std::uint64_t chunksOfStream(const ChunkNode& root, std::uint32_t stream) {
    std::uint64_t count = 0;
    forEachChunk(root, [&](const ChunkNode& node) {
        const std::uint32_t tens = (node.id & 0xFFU) - '0';
        const std::uint32_t ones = (node.id >> 8 & 0xFFU) - '0';
        if (isData(node) && tens * 10 + ones == stream) {
            ++count;
        }
    });
    return count;
}

}  // namespace

bool isStandardIndex(const Bytes& data) {
    return data.size() >= kIndexHeaderBytes && numberAt(data, 0, 2) == 2 && data[3] == 1;
}

bool isSuperIndex(const Bytes& data) {
    return data.size() >= kIndexHeaderBytes && numberAt(data, 0, 2) == 4 && data[3] == 0;
}

bool isOpenDmlIndex(const ChunkNode& node) {
    return !node.isList &&
           (node.id == riffCode("indx") || (node.id & 0xFFFFU) == kCodeOfIx || node.id >> 16 == kCodeOfIx);
}

ChunkNode* findList(ChunkTree& tree, std::uint32_t type) {
    return const_cast<ChunkNode*>(findFirst(tree.root, type));
}

std::vector<ChunkLink> linksOf(const ChunkTree& tree) {
    Places places;
    forEachChunk(tree.root, [&](const ChunkNode& node) { places.emplace(node.offset, node.number); });
    const ChunkNode* const movi = findFirst(tree.root, riffCode("movi"));
    const std::uint64_t typeOffset = movi == nullptr ? 0 : movi->offset + kHeaderBytes;
    std::vector<ChunkLink> links;
    Linker linker(places, links);
    forEachChunk(tree.root, [&](const ChunkNode& node) {
        if (!node.isList && node.id == riffCode("idx1")) {
            linkOldIndex(linker, node, typeOffset);
        } else if (isOpenDmlIndex(node)) {
            if (isStandardIndex(node.data)) {
                linkStandardIndex(linker, node);
            }
            if (isSuperIndex(node.data)) {
                linkSuperIndex(linker, node);
            }
        }
    });
    return links;
}

void repairLinks(ChunkTree& tree, const std::vector<ChunkLink>& links) {
    layOut(tree);
    std::unordered_map<std::uint32_t, ChunkNode*> nodes;
    forEachChunk(tree.root, [&](ChunkNode& node) { nodes.emplace(node.number, &node); });
    const ChunkNode* const movi = findList(tree, riffCode("movi"));
    const std::uint64_t typeOffset = movi == nullptr ? 0 : movi->offset + kHeaderBytes;

    std::unordered_map<std::uint32_t, std::uint64_t> bases;
    for (const ChunkLink& link : links) {
        const auto target = nodes.find(link.target);
        if (link.kind != ChunkLink::Kind::kStandardIndex || target == nodes.end()) {
            continue;
        }
        const auto base = bases.emplace(link.index, std::numeric_limits<std::uint64_t>::max()).first;
        base->second = std::min(base->second, target->second->offset);
    }
    for (const auto& [number, base] : bases) {
        if (const auto index = nodes.find(number); index != nodes.end()) {
            setBase(*index->second, base);
        }
    }

    for (const ChunkLink& link : links) {
        const auto index = nodes.find(link.index);
        const auto target = nodes.find(link.target);
        if (index == nodes.end() || target == nodes.end()) {
            continue;
        }
        Bytes& data = index->second->data;
        const ChunkNode& chunk = *target->second;
        const std::uint64_t size = bytesOf(chunk, true) - kHeaderBytes - (chunk.padding ? 1 : 0);
        switch (link.kind) {
            case ChunkLink::Kind::kOldIndex: {
                const std::size_t at = link.entry * kOldEntryBytes;
                putNumber(data, at + 8, 4, chunk.offset - (link.absolute ? 0 : typeOffset));
                putNumber(data, at + 12, 4, size);
                break;
            }
            case ChunkLink::Kind::kStandardIndex: {
                const std::size_t at = kIndexHeaderBytes + link.entry * kStandardEntryBytes;
                const std::uint64_t flag = numberAt(data, at + 4, 4) & kDeltaFrame;
                putNumber(data, at, 4, chunk.offset + kHeaderBytes - bases.at(link.index));
                putNumber(data, at + 4, 4, size | flag);
                break;
            }
            case ChunkLink::Kind::kSuperIndex: {
                const std::size_t at = kIndexHeaderBytes + link.entry * kSuperEntryBytes;
                putNumber(data, at, 8, chunk.offset);
                putNumber(data, at + 8, 4, size + kHeaderBytes);
                break;
            }
        }
    }
}

void repairCounts(ChunkTree& tree) {
    const std::uint64_t frames = chunksOfStream(tree.root, 0);
    std::uint32_t stream = 0;
    forEachChunk(tree.root, [&](ChunkNode& node) {
        if (node.id == riffCode("avih")) {
            putNumber(node.data, 16, 4, frames);
        }
        if (node.id == riffCode("dmlh")) {
            putNumber(node.data, 0, 4, frames);
        }
        if (node.id == riffCode("strh")) {
            if (numberAt(node.data, 0, 4) == riffCode("vids")) {
                putNumber(node.data, 32, 4, chunksOfStream(tree.root, stream));
            }
            ++stream;
        }
    });
}

Bytes makeOldIndex(ChunkTree& tree) {
    layOut(tree);
    Bytes bytes;
    if (const ChunkNode* movi = findList(tree, riffCode("movi"))) {
        appendOldEntries(*movi, movi->offset + kHeaderBytes, bytes);
    }
    return bytes;
}

}  // namespace fuzz
