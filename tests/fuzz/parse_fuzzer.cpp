// Parses the input as an AVI file: whatever it holds, the answer is the same each time, the chunk lists and
// the lookups in them agree, and neither memory nor reading exceed what the file's size justifies.
#include <algorithm>
#include <cstring>
#include <span>
#include <vector>

#include "avi/avi_reader.h"
#include "avi/avi_stream.h"
#include "avi/frame_chunk.h"
#include "tests/fuzz/fuzz_target.h"
#include "tests/fuzz/memory_bound.h"
#include "tests/support/allocation_meter/allocation_meter.h"
#include "tests/support/memory_file.h"

namespace {

using orvantis::AviReader;
using orvantis::AviStream;
using orvantis::ChunkList;
using orvantis::IndexEntry;
using orvantis::RiffChunk;
using orvantis::test::MemoryFile;

template <class Value>
bool sameBytes(const Value& a, const Value& b) {
    return std::memcmp(&a, &b, sizeof(Value)) == 0;
}

bool sameEntries(const ChunkList& a, const ChunkList& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const IndexEntry& x, const IndexEntry& y) {
        return x.offset == y.offset && x.size == y.size && x.reserved == y.reserved && x.start == y.start &&
               x.keyFrame == y.keyFrame;
    });
}

void checkSame(const AviReader& a, const AviReader& b) {
    FUZZ_CHECK(a.errorText() == b.errorText());
    FUZZ_CHECK(sameBytes(a.mainHeader, b.mainHeader));
    FUZZ_CHECK(sameBytes(a.extHeader, b.extHeader));
    FUZZ_CHECK(a.streams.size() == b.streams.size());
    for (std::size_t i = 0; i < a.streams.size(); ++i) {
        const AviStream& x = *a.streams[i];
        const AviStream& y = *b.streams[i];
        FUZZ_CHECK(x.index == y.index && x.chunkId == y.chunkId && x.format == y.format);
        FUZZ_CHECK(sameBytes(x.header, y.header));
        FUZZ_CHECK(x.hasOpenDmlIndex == y.hasOpenDmlIndex);
        FUZZ_CHECK(sameEntries(x.legacyEntries, y.legacyEntries));
        FUZZ_CHECK(sameEntries(x.openDmlEntries, y.openDmlEntries));
    }
}

void checkSums(const ChunkList& entries) {
    std::uint64_t start = 0;
    for (const IndexEntry& entry : entries) {
        FUZZ_CHECK(entry.start == start);
        FUZZ_CHECK(entry.reserved == 0);
        start += entry.size;
    }
}

void checkPosition(const AviStream& stream, std::uint64_t position) {
    const ChunkList& entries = stream.entries();
    const ChunkList::Iterator found = stream.findByPosition(position);
    if (position >= stream.totalBytes()) {
        FUZZ_CHECK(found == entries.end());
        return;
    }
    FUZZ_CHECK(found != entries.end() && found.number() < entries.size());
    const IndexEntry entry = *found;
    FUZZ_CHECK(entry.size > 0 && entry.start <= position && position - entry.start < entry.size);
    FUZZ_CHECK(entry.offset == entries[found.number()].offset &&
               entry.start == entries[found.number()].start);
}

// What nearestWithData() says, by going through the list.
std::int64_t plainNearest(const ChunkList& entries, std::size_t at, std::int64_t frameCount) {
    for (std::size_t i = at; i-- > 0;) {
        if (entries[i].size != 0) {
            return static_cast<std::int64_t>(i);
        }
    }
    for (std::size_t i = 1; i < entries.size() && static_cast<std::int64_t>(i) < frameCount; ++i) {
        if (entries[i].size != 0) {
            return static_cast<std::int64_t>(i);
        }
    }
    return -1;
}

void checkLookups(const AviStream& stream) {
    const ChunkList& entries = stream.entries();
    checkSums(stream.legacyEntries);
    checkSums(stream.openDmlEntries);
    const std::uint64_t total = stream.totalBytes();
    FUZZ_CHECK(total == (entries.empty() ? 0 : entries.back().start + entries.back().size));
    // All of a short list, the ends and some places between of a long one.
    const std::size_t step = std::max<std::size_t>(entries.size() / 256, 1);
    const auto count = static_cast<std::int64_t>(entries.size());
    for (std::size_t i = 0; i < entries.size(); i += step) {
        checkPosition(stream, entries[i].start);
        checkPosition(stream, entries[i].start + entries[i].size / 2);
        checkPosition(stream, entries[i].start + entries[i].size);
        if (entries[i].size == 0 && entries.size() <= 4096) {
            FUZZ_CHECK(stream.nearestWithData(i, count) == plainNearest(entries, i, count));
            FUZZ_CHECK(stream.nearestWithData(i, count / 2) == plainNearest(entries, i, count / 2));
        }
    }
    for (const std::uint64_t position : {std::uint64_t{0}, total, ~std::uint64_t{0}}) {
        checkPosition(stream, position);
    }
    const auto format = stream.formatHeader();
    std::uint8_t head[sizeof(format)] = {};
    if (!stream.format.empty()) {
        std::memcpy(head, stream.format.data(), std::min(stream.format.size(), sizeof(head)));
    }
    FUZZ_CHECK(std::memcmp(&format, head, sizeof(head)) == 0);
    FUZZ_CHECK(stream.extraData().size() <= stream.format.size());
}

void checkFrames(MemoryFile& file, const AviStream& stream) {
    const std::size_t entries = stream.entries().size();
    const std::size_t step = std::max<std::size_t>(entries / 16, 1);
    orvantis::FrameChunk chunk;
    for (std::size_t i = 0; i < entries; i += step) {
        using Outcome = orvantis::FrameChunkRead::Outcome;
        const orvantis::FrameChunkRead result =
            orvantis::readFrameChunk(file, stream, i, static_cast<std::int64_t>(entries), chunk);
        FUZZ_CHECK(result.substitute.has_value() ==
                   (stream.entries()[i].size == 0 && result.outcome != Outcome::kNoneWithData));
        FUZZ_CHECK(result.failure.empty() == (result.outcome != Outcome::kFailed));
        FUZZ_CHECK(chunk.buffer.capacity() <= file.bytes().size());
        if (result.outcome == Outcome::kRead && stream.entries()[i].size != 0) {
            FUZZ_CHECK(chunk.bytes == stream.entries()[i].size);
            FUZZ_CHECK(std::memcmp(chunk.buffer.data(), file.bytes().data() + stream.entries()[i].offset,
                                   chunk.bytes) == 0);
        }
    }
}

void checkCost(MemoryFile& file) {
    const std::uint64_t size = file.bytes().size();
    const auto& counts = file.counts();
    // Small reads come through windows of 64 KiB, and index chunks are limited in number and bytes.
    constexpr std::uint64_t kWindow = 65'536;
    const std::uint64_t refills = 2 * (size / kWindow) + 2048;
    FUZZ_CHECK(counts.reads <= refills + size / 16 + 2048);
    FUZZ_CHECK(counts.bytesRead <= refills * std::min(size, kWindow) + 4 * size + (std::uint64_t{4} << 20));
    FUZZ_CHECK(counts.largestRead <= std::max(size, kWindow));
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    MemoryFile file(std::span<const std::uint8_t>(data, size));
    AviReader reader;
    orvantis::test::startCounting();
    const bool usable = reader.parse(file, false);
    FUZZ_CHECK(orvantis::test::counted().peak <= fuzz::memoryBound(size));
    checkCost(file);
    FUZZ_CHECK(usable || !reader.errors.empty());

    AviReader second;
    file.seek(0);
    FUZZ_CHECK(second.parse(file, true) == usable);
    second.readIndexes();
    checkSame(reader, second);
    file.seek(0);
    FUZZ_CHECK(second.parse(file, false) == usable);  // starts from nothing
    checkSame(reader, second);

    if (!usable) {
        return 0;
    }
    for (const auto& stream : reader.streams) {
        checkLookups(*stream);
        checkFrames(file, *stream);
    }
    FUZZ_CHECK(reader.streamsOfType(orvantis::kStreamTypeVideo).size() <= reader.streams.size());
    return 0;
}
