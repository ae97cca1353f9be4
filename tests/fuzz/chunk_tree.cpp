#include "tests/fuzz/chunk_tree.h"

#include <algorithm>

#include "avi/four_char_code.h"

namespace fuzz {

namespace {

using orvantis::riffCode;

constexpr std::size_t kChunkHeaderBytes = 8;
constexpr std::size_t kTypeBytes = 4;

std::uint32_t wordAt(std::span<const std::uint8_t> bytes, std::size_t at) {
    return static_cast<std::uint32_t>(bytes[at]) | static_cast<std::uint32_t>(bytes[at + 1]) << 8 |
           static_cast<std::uint32_t>(bytes[at + 2]) << 16 | static_cast<std::uint32_t>(bytes[at + 3]) << 24;
}

void append(Bytes& bytes, std::uint32_t word) {
    for (int i = 0; i < 4; ++i) {
        bytes.push_back(static_cast<std::uint8_t>(word >> (8 * i)));
    }
}

// Where a chunk id has none of them the rest of the list is data, not thousands of chunks.
bool isCode(std::uint32_t id) {
    for (int i = 0; i < 4; ++i) {
        const std::uint32_t letter = id >> (8 * i) & 0xFFU;
        if (letter < 0x20 || letter > 0x7E) {
            return false;
        }
    }
    return true;
}

// Reads what lies in a list: its chunks, then what is none. `at` is the file position of `bytes`.
void readLevel(ChunkTree& tree, ChunkNode& list, std::span<const std::uint8_t> bytes, std::uint64_t at,
               int depth) {
    std::size_t done = 0;
    while (bytes.size() - done >= kChunkHeaderBytes && isCode(wordAt(bytes, done))) {
        ChunkNode node;
        node.id = wordAt(bytes, done);
        node.offset = at + done;
        node.number = tree.nextNumber++;
        const std::uint32_t claimed = wordAt(bytes, done + 4);
        const std::size_t left = bytes.size() - done - kChunkHeaderBytes;
        const std::size_t size = std::min<std::size_t>(claimed, left);
        if (size != claimed) {
            node.claim = claimed;
        }
        const auto content = bytes.subspan(done + kChunkHeaderBytes, size);
        done += kChunkHeaderBytes + size;
        if (size % 2 != 0 && done < bytes.size()) {
            node.padding = bytes[done++];
        }
        node.isList = (node.id == riffCode("RIFF") || node.id == riffCode("LIST")) && size >= kTypeBytes &&
                      depth < kMostLevels;
        if (node.isList) {
            node.type = wordAt(content, 0);
            readLevel(tree, node, content.subspan(kTypeBytes), node.offset + kChunkHeaderBytes + kTypeBytes,
                      depth + 1);
        } else {
            node.data.assign(content.begin(), content.end());
        }
        list.children.push_back(std::move(node));
    }
    list.data.assign(bytes.begin() + static_cast<std::ptrdiff_t>(done), bytes.end());
}

std::uint64_t contentBytes(const ChunkNode& node) {
    std::uint64_t bytes = node.data.size() + (node.isList ? kTypeBytes : 0);
    for (std::size_t i = 0; i < node.children.size(); ++i) {
        bytes += bytesOf(node.children[i], i + 1 == node.children.size() && node.data.empty());
    }
    return bytes;
}

bool isPadded(const ChunkNode& node, std::uint64_t size, bool isLast) {
    return size % 2 != 0 && (node.padding || !isLast);
}

void layOutLevel(ChunkNode& list, std::uint64_t at) {
    for (ChunkNode& node : list.children) {
        node.offset = at;
        layOutLevel(node, at + kChunkHeaderBytes + kTypeBytes);
        at += bytesOf(node, &node == &list.children.back() && list.data.empty());
    }
}

void writeLevel(Bytes& bytes, const ChunkNode& list) {
    for (const ChunkNode& node : list.children) {
        const std::uint64_t size = contentBytes(node);
        append(bytes, node.id);
        append(bytes, node.claim.value_or(static_cast<std::uint32_t>(size)));
        if (node.isList) {
            append(bytes, node.type);
        }
        writeLevel(bytes, node);
        if (isPadded(node, size, &node == &list.children.back() && list.data.empty())) {
            bytes.push_back(node.padding.value_or(0));
        }
    }
    bytes.insert(bytes.end(), list.data.begin(), list.data.end());
}

}  // namespace

ChunkTree readTree(std::span<const std::uint8_t> file) {
    ChunkTree tree;
    tree.root.isList = true;
    readLevel(tree, tree.root, file, 0, 0);
    return tree;
}

std::uint64_t bytesOf(const ChunkNode& node, bool isLast) {
    const std::uint64_t size = contentBytes(node);
    return kChunkHeaderBytes + size + (isPadded(node, size, isLast) ? 1 : 0);
}

std::uint64_t layOut(ChunkTree& tree) {
    layOutLevel(tree.root, 0);
    return contentBytes(tree.root) - kTypeBytes;  // the root has no type
}

Bytes writeTree(ChunkTree& tree) {
    Bytes bytes;
    bytes.reserve(static_cast<std::size_t>(layOut(tree)));
    writeLevel(bytes, tree.root);
    return bytes;
}

void renumber(ChunkTree& tree, ChunkNode& node) {
    node.number = tree.nextNumber++;
    for (ChunkNode& child : node.children) {
        renumber(tree, child);
    }
}

std::uint64_t numberAt(const Bytes& data, std::size_t at, std::size_t bytes) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes && at + i < data.size(); ++i) {
        value |= static_cast<std::uint64_t>(data[at + i]) << (8 * i);
    }
    return value;
}

void putNumber(Bytes& data, std::size_t at, std::size_t bytes, std::uint64_t value) {
    if (at > data.size() || data.size() - at < bytes) {
        return;
    }
    for (std::size_t i = 0; i < bytes; ++i) {
        data[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

}  // namespace fuzz
