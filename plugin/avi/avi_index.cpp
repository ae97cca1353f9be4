#include "avi/avi_index.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <exception>
#include <string>

#include "avi/avi_stream.h"
#include "avi/index_arithmetic.h"

namespace orvantis {

namespace {

constexpr std::uint64_t kSpareIndexChunks = 1024;
constexpr std::uint64_t kSpareIndexBytes = 1024 * 1024;
// Smallest useful index chunk: header, index header, no entry.
constexpr std::uint64_t kIndexChunkBytes = 32;

constexpr std::uint32_t kChunkHeaderBytes = 8;

bool isSuperIndex(const AviStdIndexHeader& header) noexcept {
    return header.bIndexType == kIndexOfIndexes && header.wLongsPerEntry == 4;
}
bool isStandardIndex(const AviStdIndexHeader& header) noexcept {
    return header.bIndexType == kIndexOfChunks && header.wLongsPerEntry == 2;
}

static_assert(legacyPosition(riffCode("42dc")) == 42 && legacyPosition(riffCode("ix00")) == kLegacyPositions);

// A list in the making; the streams that have none, and codes that name no stream, share one that is not
// wanted.
struct LegacyList {
    ChunkListBuilder chunks;
    bool wanted = false;

    void add(std::uint64_t base, const AviOldIndexEntry& entry) noexcept {
        if (!wanted) {
            return;
        }
        try {
            chunks.add(base, entry.dwOffset, entry.dwSize, (entry.dwFlags & kOldIndexKeyFrame) != 0);
        } catch (const std::exception&) {
            *this = {};  // out of memory: this stream's list stays empty
        }
    }
};

// The lists of all streams in one pass. False when the table cannot be read whole.
bool readLegacyIndex(IndexInput& input, const RiffChunk& idx1, std::uint64_t base,
                     std::array<LegacyList, kLegacyPositions + 1>& lists) {
    constexpr std::uint32_t kEntryBytes = sizeof(AviOldIndexEntry);
    static_assert(IndexInput::kPieceBytes % kEntryBytes == 0);
    const std::uint32_t bytes = idx1.dataSize();
    if (!input.holds(idx1.dataPosition(), bytes)) {
        return false;
    }
    for (std::uint32_t done = 0; done < bytes;) {
        const std::uint32_t count = std::min(bytes - done, IndexInput::kPieceBytes);
        const std::byte* const piece = input.read(idx1.dataPosition() + done, count);
        if (piece == nullptr) {
            return false;
        }
        const std::uint32_t whole = count / kEntryBytes * kEntryBytes;
        AviOldIndexEntry entry;
        for (std::uint32_t at = 0; at < whole; at += kEntryBytes) {
            std::memcpy(&entry, piece + at, kEntryBytes);
            lists[legacyPosition(entry.dwChunkId)].add(base, entry);
        }
        if (whole != count) {
            entry = {};  // its end is not in the file
            std::memcpy(&entry, piece + whole, count - whole);
            lists[legacyPosition(entry.dwChunkId)].add(base, entry);
        }
        done += count;
    }
    return true;
}

}  // namespace

OpenDmlIndexReader::OpenDmlIndexReader(IndexInput& input, Problems& errors)
    : m_input(input),
      m_errors(errors),
      m_chunksLeft(input.fileSize() / kIndexChunkBytes + kSpareIndexChunks),
      m_bytesLeft(indexByteBudget(input.fileSize(), kSpareIndexBytes)) {}

void OpenDmlIndexReader::record(const AviStream& stream, std::uint64_t position, std::uint32_t size,
                                const char* message) noexcept {
    if (!m_errors.hasRoom()) {
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
        m_errors.add({ProblemPlace::Part::kStreamList, stream.index}, line);
    } catch (const std::exception&) {
        return;  // out of memory
    }
}

bool OpenDmlIndexReader::mayRead(std::uint64_t position, std::uint32_t size) const {
    if (m_chunksLeft == 0 || !isInBudget(size, m_bytesLeft)) {
        return false;
    }
    if (std::find(m_chain.begin(), m_chain.end(), position) != m_chain.end()) {
        return false;
    }
    return m_input.holds(position, size);
}

bool OpenDmlIndexReader::readEntries(std::uint64_t position, std::uint32_t size, AviStdIndexHeader& header,
                                     std::uint32_t& count, AviStream& stream) {
    // The first piece begins with the header; all of them end with a whole entry, whichever kind it is.
    constexpr std::uint32_t kHeaderBytes = kIndexHeaderSize;
    static_assert(kHeaderBytes == sizeof(AviStdIndexHeader));
    constexpr std::uint32_t kEntryBytes = sizeof(AviSuperIndexEntry);
    constexpr std::uint32_t kPieceBytes =
        (IndexInput::kPieceBytes - kHeaderBytes) / kEntryBytes * kEntryBytes;
    static_assert(kEntryBytes % sizeof(AviStdIndexEntry) == 0 &&
                  kHeaderBytes + kPieceBytes <= IndexInput::kPieceBytes);

    const std::byte* piece = m_input.read(position, std::min(size, kHeaderBytes + kPieceBytes));
    if (piece == nullptr) {
        return false;
    }
    std::memcpy(&header, piece, sizeof(header));
    const std::uint32_t entrySize = 4U * header.wLongsPerEntry;
    count = entriesInData(size, header.nEntriesInUse, entrySize);
    const std::uint32_t used = count * entrySize;  // bytes

    const std::size_t named = stream.superIndex.size();
    const bool names = isSuperIndex(header) && m_chain.size() < kMaxSuperIndexDepth;
    if (names) {
        stream.superIndex.resize(named + count);
    }
    const std::uint64_t base = header.qwBaseOffset;
    // To the end even where the entries in use end before it: an index that cannot be read whole is no index.
    for (std::uint32_t done = 0, bytes = 0; done < size - kHeaderBytes; done += bytes) {
        bytes = std::min(size - kHeaderBytes - done, kPieceBytes);
        piece = done == 0 ? piece + kHeaderBytes : m_input.read(position + kHeaderBytes + done, bytes);
        if (piece == nullptr) {
            return false;
        }
        const std::uint32_t usedHere = usedInPiece(bytes, used, done);
        if (names && usedHere != 0) {
            std::memcpy(&stream.superIndex[named + done / kEntryBytes], piece, usedHere);
        }
        if (isStandardIndex(header)) {
            m_list.add(base, {reinterpret_cast<const AviStdIndexEntry*>(piece),
                              usedHere / sizeof(AviStdIndexEntry)});
        }
    }
    return true;
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
        const std::uint64_t position = entry.qwOffset + kChunkHeaderBytes;
        if (!readIndex(position, sizeWithoutHeader(entry.dwSize), stream)) {
            complete = false;
        }
    }
    m_chain.pop_back();
    return complete;
}

bool OpenDmlIndexReader::readIndex(std::uint64_t position, std::uint32_t size, AviStream& stream) noexcept {
    if (!hasIndexHeader(size)) {
        record(stream, position, size, "index data size too small");
        return false;
    }
    const ChunkListBuilder::Mark listed = m_list.mark();
    const std::size_t named = stream.superIndex.size();
    const auto fail = [&] {
        m_list.backTo(listed);
        stream.superIndex.resize(named);
        record(stream, position, size, "failed to read index data");
        return false;
    };
    try {
        AviStdIndexHeader header;
        std::uint32_t count = 0;
        if (!mayRead(position, size) || !readEntries(position, size, header, count, stream)) {
            return fail();
        }
        // One on a bad sector takes nothing from those behind it.
        --m_chunksLeft;
        m_bytesLeft -= size;

        if (count < header.nEntriesInUse) {
            const std::string claimed = std::to_string(header.nEntriesInUse);
            const std::string message =
                "index data size is smaller than required by nEntriesInUse (" + claimed + ")";
            record(stream, position, size, message.c_str());
        }
        if (isStandardIndex(header)) {
            stream.standardIndexes.push_back(StandardIndex{header, count});
            return true;
        }
        if (isSuperIndex(header)) {
            if (m_chain.size() == kMaxSuperIndexDepth) {
                return fail();
            }
            return readNamedIndexes(named, count, position, stream);
        }
        const std::string message = "unknown bIndexType: " + std::to_string(header.bIndexType) +
                                    ", wLongsPerEntry: " + std::to_string(header.wLongsPerEntry);
        record(stream, position, size, message.c_str());
    } catch (const std::exception&) {
        return fail();  // out of memory
    }
    return false;
}

bool OpenDmlIndexReader::readOpenDmlIndex(std::uint64_t position, std::uint32_t size,
                                          AviStream& stream) noexcept {
    const bool complete = readIndex(position, size, stream);
    stream.openDmlEntries = m_list.finish();
    return complete;
}

void buildChunkLists(IndexInput& input, const RiffChunk* idx1, const RiffChunk* movi,
                     std::span<const std::unique_ptr<AviStream>> streams) noexcept {
    if (idx1 == nullptr || movi == nullptr) {
        return;
    }
    // The offsets of idx1 point at chunk headers and count from the list type, 8 bytes into the list.
    constexpr std::uint64_t kTypeOffset = 8;
    std::array<LegacyList, kLegacyPositions + 1> lists;
    const std::size_t positions = std::min<std::size_t>(streams.size(), kLegacyPositions);
    for (std::size_t p = 0; p < positions; ++p) {
        lists[p].wanted = true;
    }
    try {
        if (!readLegacyIndex(input, *idx1, movi->offset + kTypeOffset + kChunkHeaderBytes, lists)) {
            return;
        }
    } catch (const std::exception&) {
        return;  // out of memory
    }
    for (std::size_t p = 0; p < positions; ++p) {
        streams[p]->legacyEntries = lists[p].chunks.finish();
    }
}

}  // namespace orvantis
