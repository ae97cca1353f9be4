#include "avi/avi_index.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <exception>
#include <limits>
#include <new>

#include "avi/error_text.h"

namespace orvantis {

namespace {

constexpr std::uint64_t kSpareIndexChunks = 1024;
constexpr std::uint64_t kSpareIndexBytes = 1024 * 1024;
// Smallest useful index chunk: header, index header, no entry.
constexpr std::uint64_t kIndexChunkBytes = 32;

constexpr std::uint32_t kChunkHeaderBytes = 8;

// idx1 names a stream by two decimal digits, so no stream beyond these has a legacy list.
constexpr std::uint32_t kLegacyPositions = 100;

// The stream position in a chunk code's first two characters, or kLegacyPositions when they are no digits.
constexpr std::uint32_t legacyPosition(std::uint32_t chunkCode) noexcept {
    const std::uint32_t tens = (chunkCode & 0xFFU) - '0';
    const std::uint32_t ones = (chunkCode >> 8 & 0xFFU) - '0';
    return tens < 10 && ones < 10 ? tens * 10 + ones : kLegacyPositions;
}
static_assert(legacyPosition(riffCode("42dc")) == 42 && legacyPosition(riffCode("ix00")) == kLegacyPositions);

void reserveList(std::vector<IndexEntry>& list, std::uint64_t count) {
    // Entries are numbered in 32 bits.
    if (count > std::numeric_limits<std::uint32_t>::max()) throw std::bad_alloc();
    list.reserve(static_cast<std::size_t>(count));
}

// Only for lists with empty chunks: passing over a list of a million entries again is not free.
void prepareEmptyRuns(AviStream& stream) noexcept {
    try {
        stream.indexEmptyRuns();
    } catch (const std::exception&) {
        return;  // out of memory: empty frames are then not found
    }
}

// The lists of all streams in one pass over the table to count, and one to fill.
void buildLegacyLists(std::span<const AviOldIndexEntry> table, std::uint64_t base,
                      std::span<const std::unique_ptr<AviStream>> streams) noexcept {
    std::array<std::uint64_t, kLegacyPositions + 1> counts{};
    for (const AviOldIndexEntry& entry : table) ++counts[legacyPosition(entry.dwChunkId)];

    struct List {
        std::vector<IndexEntry>* entries = nullptr;  // null: not wanted
        std::uint64_t bytes = 0;
        bool hasEmpty = false;
    };
    std::array<List, kLegacyPositions + 1> lists{};
    const std::size_t positions = std::min<std::size_t>(streams.size(), kLegacyPositions);
    for (std::size_t p = 0; p < positions; ++p) {
        if (counts[p] == 0) continue;
        try {
            reserveList(streams[p]->legacyEntries, counts[p]);
            lists[p].entries = &streams[p]->legacyEntries;
        } catch (const std::exception&) {
            continue;  // out of memory: this stream's list stays empty
        }
    }
    for (const AviOldIndexEntry& entry : table) {
        List& list = lists[legacyPosition(entry.dwChunkId)];
        if (list.entries == nullptr) continue;
        list.entries->push_back(IndexEntry{base + entry.dwOffset, entry.dwSize, 0, list.bytes,
                                           (entry.dwFlags & kOldIndexKeyFrame) != 0});
        list.bytes += entry.dwSize;
        list.hasEmpty |= entry.dwSize == 0;
    }
    for (std::size_t p = 0; p < positions; ++p) {
        if (lists[p].hasEmpty && !streams[p]->hasOpenDmlIndex) prepareEmptyRuns(*streams[p]);
    }
}

void buildOpenDmlList(AviStream& stream) {
    std::uint64_t count = 0;
    for (const StandardIndex& block : stream.standardIndexes) count += block.entries().size();
    reserveList(stream.openDmlEntries, count);

    std::uint64_t start = 0;
    bool hasEmpty = false;
    for (const StandardIndex& block : stream.standardIndexes) {
        const std::uint64_t base = block.header().qwBaseOffset;
        for (const AviStdIndexEntry& entry : block.entries()) {
            const std::uint32_t size = entry.dwSize & ~kStdIndexDeltaFrame;
            stream.openDmlEntries.push_back(
                IndexEntry{base + entry.dwOffset, size, 0, start, (entry.dwSize & kStdIndexDeltaFrame) == 0});
            start += size;
            hasEmpty |= size == 0;
        }
    }
    if (hasEmpty && stream.hasOpenDmlIndex) prepareEmptyRuns(stream);
}

}  // namespace

OpenDmlIndexReader::OpenDmlIndexReader(FileWindow& input, std::string& errors)
    : m_input(input),
      m_errors(errors),
      m_chunksLeft(input.fileSize() / kIndexChunkBytes + kSpareIndexChunks),
      m_bytesLeft(2 * input.fileSize() + kSpareIndexBytes) {
    m_chain.reserve(kMaxSuperIndexDepth);
}

void OpenDmlIndexReader::record(const AviStream& stream, std::uint64_t position, std::uint32_t size,
                                const char* message) noexcept {
    if (!hasRoomFor(m_errors, 1)) return;  // hostile files have problems by the million
    try {
        std::string line = "readIndex: stream[";
        line += std::to_string(stream.index);
        line += "], pos: ";
        line += std::to_string(static_cast<std::int64_t>(position));
        line += ", size: ";
        line += std::to_string(size);
        line += ": ";
        line += message;
        line += '\n';
        appendBounded(m_errors, line);
    } catch (const std::exception&) {
        return;  // out of memory
    }
}

bool OpenDmlIndexReader::readBlock(std::uint64_t position, std::uint32_t size,
                                   RawVector<AviStdIndexEntry>& block) {
    if (m_chunksLeft == 0 || size > m_bytesLeft) return false;
    if (std::find(m_chain.begin(), m_chain.end(), position) != m_chain.end()) return false;
    if (!m_input.holds(position, size)) return false;
    --m_chunksLeft;
    m_bytesLeft -= size;
    block.resize((std::size_t{size} + sizeof(AviStdIndexEntry) - 1) / sizeof(AviStdIndexEntry));
    return m_input.readBulk(position, block.data(), size);
}

bool OpenDmlIndexReader::readNamedIndexes(std::size_t first, std::uint32_t count, std::uint64_t superPosition,
                                          AviStream& stream) {
    if (stream.standardIndexes.empty()) {
        stream.standardIndexes.reserve(
            static_cast<std::size_t>(std::min<std::uint64_t>(count, m_chunksLeft)));
    }
    m_chain.push_back(superPosition);
    bool complete = true;
    for (std::size_t i = first; i < first + count; ++i) {
        // By value: the list grows when a named index is a super index itself.
        const AviSuperIndexEntry entry = stream.superIndex[i];
        const std::uint32_t size = entry.dwSize < kChunkHeaderBytes ? 0 : entry.dwSize - kChunkHeaderBytes;
        if (!readOpenDmlIndex(entry.qwOffset + kChunkHeaderBytes, size, stream)) complete = false;
    }
    m_chain.pop_back();
    return complete;
}

bool OpenDmlIndexReader::readOpenDmlIndex(std::uint64_t position, std::uint32_t size,
                                          AviStream& stream) noexcept {
    if (size < sizeof(AviStdIndexHeader)) {
        record(stream, position, size, "index data size too small");
        return false;
    }
    try {
        RawVector<AviStdIndexEntry> block;
        if (!readBlock(position, size, block)) {
            record(stream, position, size, "failed to read index data");
            return false;
        }
        AviStdIndexHeader header;
        std::memcpy(&header, block.data(), sizeof(header));

        std::uint32_t count = header.nEntriesInUse;
        const std::uint32_t entrySize = 4U * header.wLongsPerEntry;
        const std::uint32_t entryBytes = size - std::uint32_t{sizeof(AviStdIndexHeader)};
        if (entrySize != 0) count = std::min(count, entryBytes / entrySize);
        if (count < header.nEntriesInUse) {
            const std::string claimed = std::to_string(header.nEntriesInUse);
            const std::string message =
                "index data size is smaller than required by nEntriesInUse (" + claimed + ")";
            record(stream, position, size, message.c_str());
        }
        if (header.bIndexType == kIndexOfIndexes && header.wLongsPerEntry == 4) {
            if (m_chain.size() < kMaxSuperIndexDepth) {
                const std::size_t first = stream.superIndex.size();
                stream.superIndex.resize(first + count);
                if (count != 0) {
                    std::memcpy(&stream.superIndex[first], block.data() + StandardIndex::kHeaderEntries,
                                std::size_t{count} * sizeof(AviSuperIndexEntry));
                }
                RawVector<AviStdIndexEntry>().swap(block);
                return readNamedIndexes(first, count, position, stream);
            }
            record(stream, position, size, "failed to read index data");
            return false;
        }
        if (header.bIndexType == kIndexOfChunks && header.wLongsPerEntry == 2) {
            block.resize(StandardIndex::kHeaderEntries + count);
            stream.standardIndexes.push_back(StandardIndex(std::move(block)));
            return true;
        }
        const std::string message = "unknown bIndexType: " + std::to_string(header.bIndexType) +
                                    ", wLongsPerEntry: " + std::to_string(header.wLongsPerEntry);
        record(stream, position, size, message.c_str());
    } catch (const std::exception&) {
        record(stream, position, size, "failed to read index data");  // out of memory
    }
    return false;
}

void buildChunkLists(std::span<const AviOldIndexEntry> legacyIndex, const RiffChunk* movi,
                     std::span<const std::unique_ptr<AviStream>> streams) noexcept {
    for (const std::unique_ptr<AviStream>& stream : streams) {
        try {
            buildOpenDmlList(*stream);
        } catch (const std::exception&) {
            stream->hasOpenDmlIndex = false;  // out of memory: idx1 is next
        }
    }
    // The offsets of idx1 point at chunk headers and count from the list type, 8 bytes into the list.
    constexpr std::uint64_t kTypeOffset = 8;
    if (movi != nullptr)
        buildLegacyLists(legacyIndex, movi->offset + kTypeOffset + kChunkHeaderBytes, streams);
}

}  // namespace orvantis
