#include "tests/unit/avi/whole_index.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <exception>
#include <limits>
#include <new>

#include "avi/error_text.h"

namespace orvantis::test {

namespace {

constexpr std::uint64_t kSpareIndexChunks = 1024;
constexpr std::uint64_t kSpareIndexBytes = 1024 * 1024;
// Smallest useful index chunk: header, index header, no entry.
constexpr std::uint64_t kIndexChunkBytes = 32;

constexpr std::uint32_t kChunkHeaderBytes = 8;

// How many entries' room the header of an index takes.
constexpr std::ptrdiff_t kHeaderEntries = sizeof(AviStdIndexHeader) / sizeof(AviStdIndexEntry);

// idx1 names a stream by two decimal digits, so no stream beyond these has a legacy list.
constexpr std::uint32_t kLegacyPositions = 100;

// The stream position in a chunk code's first two characters, or kLegacyPositions when they are no digits.
constexpr std::uint32_t legacyPosition(std::uint32_t chunkCode) {
    const std::uint32_t tens = (chunkCode & 0xFFU) - '0';
    const std::uint32_t ones = (chunkCode >> 8 & 0xFFU) - '0';
    return tens < 10 && ones < 10 ? tens * 10 + ones : kLegacyPositions;
}
static_assert(legacyPosition(riffCode("42dc")) == 42 && legacyPosition(riffCode("ix00")) == kLegacyPositions);

void buildLegacyLists(std::span<const AviOldIndexEntry> table, std::uint64_t base,
                      std::span<WholeStream> streams) {
    std::vector<PlainChunkListBuilder> lists(kLegacyPositions + 1);
    for (const AviOldIndexEntry& entry : table) {
        lists[legacyPosition(entry.dwChunkId)].add(base, entry.dwOffset, entry.dwSize,
                                                   (entry.dwFlags & kOldIndexKeyFrame) != 0);
    }
    for (std::size_t p = 0; p < std::min<std::size_t>(streams.size(), kLegacyPositions); ++p) {
        streams[p].legacyEntries = lists[p].finish();
    }
}

void buildOpenDmlList(WholeStream& stream) {
    PlainChunkListBuilder list;
    for (const WholeStandardIndex& block : stream.standardIndexes) {
        list.add(block.header.qwBaseOffset, block.entries);
    }
    stream.openDmlEntries = list.finish();
}

// Calls `found(first, last)` for each run of entries without data, in order.
template <typename Found>
void forEachEmptyRun(const PlainChunkList& list, Found found) {
    const std::size_t count = list.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (list[i].size != 0) {
            continue;
        }
        const std::size_t first = i;
        while (i + 1 < count && list[i + 1].size == 0) {
            ++i;
        }
        found(first, i);
    }
}

}  // namespace

WholeIndexReader::WholeIndexReader(FileWindow& input, std::string& errors)
    : m_input(input),
      m_errors(errors),
      m_chunksLeft(input.fileSize() / kIndexChunkBytes + kSpareIndexChunks),
      m_bytesLeft(2 * input.fileSize() + kSpareIndexBytes) {
    m_chain.reserve(kMaxSuperIndexDepth);
}

void WholeIndexReader::record(const WholeStream& stream, std::uint64_t position, std::uint32_t size,
                              const std::string& message) {
    if (!hasRoomFor(m_errors, 1)) {
        return;  // hostile files have problems by the million
    }
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

bool WholeIndexReader::readBlock(std::uint64_t position, std::uint32_t size,
                                 std::vector<AviStdIndexEntry>& block) {
    if (m_chunksLeft == 0 || size > m_bytesLeft) {
        return false;
    }
    if (std::find(m_chain.begin(), m_chain.end(), position) != m_chain.end()) {
        return false;
    }
    if (!m_input.holds(position, size)) {
        return false;
    }
    --m_chunksLeft;
    m_bytesLeft -= size;
    block.resize((std::size_t{size} + sizeof(AviStdIndexEntry) - 1) / sizeof(AviStdIndexEntry));
    return m_input.readBulk(position, block.data(), size);
}

bool WholeIndexReader::readNamedIndexes(std::size_t first, std::uint32_t count, std::uint64_t superPosition,
                                        WholeStream& stream) {
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
        if (!readOpenDmlIndex(entry.qwOffset + kChunkHeaderBytes, size, stream)) {
            complete = false;
        }
    }
    m_chain.pop_back();
    return complete;
}

bool WholeIndexReader::readOpenDmlIndex(std::uint64_t position, std::uint32_t size, WholeStream& stream) {
    if (size < sizeof(AviStdIndexHeader)) {
        record(stream, position, size, "index data size too small");
        return false;
    }
    try {
        std::vector<AviStdIndexEntry> block;
        if (!readBlock(position, size, block)) {
            record(stream, position, size, "failed to read index data");
            return false;
        }
        AviStdIndexHeader header;
        std::memcpy(&header, block.data(), sizeof(header));

        std::uint32_t count = header.nEntriesInUse;
        const std::uint32_t entrySize = 4U * header.wLongsPerEntry;
        const std::uint32_t entryBytes = size - std::uint32_t{sizeof(AviStdIndexHeader)};
        if (entrySize != 0) {
            count = std::min(count, entryBytes / entrySize);
        }
        if (count < header.nEntriesInUse) {
            const std::string claimed = std::to_string(header.nEntriesInUse);
            const std::string message =
                "index data size is smaller than required by nEntriesInUse (" + claimed + ")";
            record(stream, position, size, message);
        }
        if (header.bIndexType == kIndexOfIndexes && header.wLongsPerEntry == 4) {
            if (m_chain.size() < kMaxSuperIndexDepth) {
                const std::size_t first = stream.superIndex.size();
                stream.superIndex.resize(first + count);
                if (count != 0) {
                    std::memcpy(&stream.superIndex[first], block.data() + kHeaderEntries,
                                std::size_t{count} * sizeof(AviSuperIndexEntry));
                }
                return readNamedIndexes(first, count, position, stream);
            }
            record(stream, position, size, "failed to read index data");
            return false;
        }
        if (header.bIndexType == kIndexOfChunks && header.wLongsPerEntry == 2) {
            const auto first = block.begin() + kHeaderEntries;
            stream.standardIndexes.push_back(WholeStandardIndex{header, {first, first + count}});
            return true;
        }
        const std::string message = "unknown bIndexType: " + std::to_string(header.bIndexType) +
                                    ", wLongsPerEntry: " + std::to_string(header.wLongsPerEntry);
        record(stream, position, size, message);
    } catch (const std::exception&) {
        record(stream, position, size, "failed to read index data");  // out of memory
    }
    return false;
}

void buildWholeLists(FileWindow& input, const RiffChunk* idx1, const RiffChunk* movi,
                     std::span<WholeStream> streams) {
    std::vector<AviOldIndexEntry> table;
    if (idx1 != nullptr && input.holds(idx1->dataPosition(), idx1->dataSize())) {
        table.resize((std::size_t{idx1->dataSize()} + sizeof(AviOldIndexEntry) - 1) /
                     sizeof(AviOldIndexEntry));
        if (!input.readBulk(idx1->dataPosition(), table.data(), idx1->dataSize())) {
            table.clear();
        }
    }
    for (WholeStream& stream : streams) {
        buildOpenDmlList(stream);
    }
    constexpr std::uint64_t kTypeOffset = 8;
    if (movi != nullptr) {
        buildLegacyLists(table, movi->offset + kTypeOffset + kChunkHeaderBytes, streams);
    }
    for (WholeStream& stream : streams) {
        stream.indexEmptyRuns();
    }
}

void WholeStream::indexEmptyRuns() {
    // Counted first: a list of a million empty chunks must not cost twice its memory while this one grows.
    std::size_t runs = 0;
    forEachEmptyRun(entries(), [&](std::size_t, std::size_t) { ++runs; });
    m_emptyRuns.clear();
    m_emptyRuns.reserve(runs);
    forEachEmptyRun(entries(), [&](std::size_t first, std::size_t last) {
        m_emptyRuns.push_back(EmptyRun{static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(last)});
    });
}

std::int64_t WholeStream::nearestWithData(std::uint64_t entry, std::int64_t frameCount) const {
    const auto after =
        std::upper_bound(m_emptyRuns.begin(), m_emptyRuns.end(), entry,
                         [](std::uint64_t wanted, const EmptyRun& run) { return wanted < run.first; });
    if (after == m_emptyRuns.begin()) {
        return -1;
    }
    const EmptyRun& run = *(after - 1);
    if (run.first > 0) {
        return std::int64_t{run.first} - 1;
    }
    // Nothing but empty chunks from the start on: the first one behind the run serves.
    const std::int64_t next = std::int64_t{run.last} + 1;
    const auto listed = static_cast<std::int64_t>(entries().size());
    return next < std::min(frameCount, listed) ? next : -1;
}

}  // namespace orvantis::test
