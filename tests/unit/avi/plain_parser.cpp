#include "tests/unit/avi/plain_parser.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "avi/avi_stream.h"

namespace orvantis::test {

namespace {

struct Chunk {
    std::string id;
    std::uint32_t size = 0;
    std::string type;
    std::uint64_t offset = 0;
    std::vector<Chunk> children;

    bool isList() const { return id == "RIFF" || id == "LIST"; }
    std::uint64_t dataSize() const { return isList() ? (size < 4 ? 0 : size - 4) : size; }
    std::uint64_t dataPosition() const { return offset + (isList() ? 12 : 8); }
};

class PlainParser {
 public:
    PlainParser(const Bytes& file, ByteRange unreadable) : m_file(file), m_unreadable(unreadable) {}

    PlainAvi parse() {
        m_result.usable = parseAll();
        return m_result;
    }

 private:
    // Reading.
    bool has(std::uint64_t position, std::uint64_t count) const {
        if (position > m_file.size() || count > m_file.size() - position) {
            return false;
        }
        return position + count <= m_unreadable.from || m_unreadable.to <= position;
    }
    Bytes get(std::uint64_t position, std::uint64_t count) const {
        if (!has(position, count)) {
            throw std::runtime_error("end of file");
        }
        const auto from = m_file.begin() + static_cast<std::ptrdiff_t>(position);
        return {from, from + static_cast<std::ptrdiff_t>(count)};
    }
    std::string text(std::uint64_t position) const {
        const Bytes bytes = get(position, 4);
        return {bytes.begin(), bytes.end()};
    }
    std::uint64_t number(std::uint64_t position, int byteCount) const {
        const Bytes bytes = get(position, static_cast<std::uint64_t>(byteCount));
        std::uint64_t value = 0;
        for (int i = byteCount; i-- > 0;) {
            value = value << 8 | bytes[static_cast<std::size_t>(i)];
        }
        return value;
    }
    std::uint32_t word(std::uint64_t position) const {
        return static_cast<std::uint32_t>(number(position, 4));
    }

    bool walk(std::vector<Chunk>& list, std::uint64_t position, std::uint64_t bytes) {
        bool result = true;
        try {
            std::uint64_t consumed = 0;
            while (consumed < bytes) {
                Chunk chunk;
                chunk.offset = position;
                chunk.size = (get(position, 8), word(position + 4));
                chunk.id = text(position);
                if (chunk.isList()) {
                    chunk.type = text(position + 8);
                }
                list.push_back(chunk);
                Chunk& kept = list.back();
                if (kept.isList() && (kept.type == "AVI " || kept.type == "hdrl" || kept.type == "strl" ||
                                      kept.type == "odml")) {
                    if (!walk(kept.children, position + 12, kept.dataSize())) {
                        result = false;
                    }
                }
                if ((kept.isList() ? kept.type : kept.id) == "AVI ") {
                    return result;
                }
                const std::uint64_t length = ((std::uint64_t{kept.size} + 8 + 1) & 0xFFFFFFFF) / 2 * 2;
                if (length == 0) {
                    return false;
                }
                position += length;
                consumed += length;
            }
        } catch (const std::exception&) {
            return false;
        }
        return result;
    }

    static const Chunk* child(const std::vector<Chunk>& list, const std::string& id,
                              const std::string& type = "") {
        for (const Chunk& chunk : list) {
            if (type.empty() ? chunk.id == id : (chunk.isList() && chunk.type == type)) {
                return &chunk;
            }
        }
        return nullptr;
    }

    bool fail(const std::string& line) {
        m_result.errors += line;
        return false;
    }

    bool parseAll() {
        if (!has(0, 12) || text(0) != "RIFF" || text(8) != "AVI ") {
            return fail("file doesn't look like AVI (first 12 bytes is not 'RIFF'....'AVI ')");
        }
        std::vector<Chunk> tree;
        if (!walk(tree, 0, m_file.size())) {
            fail("riff structure is corrupt or invalid\n");
        }
        const std::vector<Chunk>& form = tree.at(0).children;
        const Chunk* hdrl = child(form, "", "hdrl");
        if (hdrl == nullptr) {
            return fail("hdrl missing\n");
        }
        const Chunk* avih = child(hdrl->children, "avih");
        if (avih == nullptr) {
            return fail("avih missing\n");
        }
        if (avih->dataSize() < 56 || !has(avih->dataPosition(), 56)) {
            return fail("avih data read error\n");
        }
        m_result.mainHeader = get(avih->dataPosition(), 56);

        std::uint64_t ordinal = 0;
        for (const Chunk& list : hdrl->children) {
            if (list.isList() && list.type == "strl") {
                PlainStream stream;
                stream.ordinal = ordinal++;
                if (parseStream(list, stream)) {
                    m_result.streams.push_back(stream);
                }
            }
            if (list.isList() && list.type == "odml") {
                const Chunk* dmlh = child(list.children, "dmlh");
                if (dmlh == nullptr) {
                    continue;
                }
                const std::uint64_t count = std::min<std::uint64_t>(dmlh->dataSize(), 248);
                if (!has(dmlh->dataPosition(), count)) {
                    continue;
                }
                const auto bytes = get(dmlh->dataPosition(), count);
                m_result.extHeader.resize(248);
                std::copy(bytes.begin(), bytes.end(), m_result.extHeader.begin());
            }
        }

        Bytes table;
        if (const Chunk* idx1 = child(form, "idx1")) {
            const std::uint64_t size = idx1->dataSize();
            if (has(idx1->dataPosition(), size)) {
                table = get(idx1->dataPosition(), size);
            }
            table.resize((table.size() + 15) / 16 * 16);
            if (size % 16 != 0) {
                fail("idx1 size is not a multiple of index entry size\n");
            }
        }
        buildLists(table, child(form, "", "movi"));
        return true;
    }

    bool parseStream(const Chunk& strl, PlainStream& stream) {
        const std::string name = "stream[" + std::to_string(stream.ordinal) + "]: ";
        const Chunk* strh = child(strl.children, "strh");
        if (strh == nullptr) {
            return fail(name + "strh missing in strl\n");
        }
        const Chunk* strf = child(strl.children, "strf");
        if (strf == nullptr) {
            return fail(name + "strf missing in strl\n");
        }
        if (strh->dataSize() < 56 || !has(strh->dataPosition(), 56)) {
            return fail(name + "strh data read error\n");
        }
        stream.header = get(strh->dataPosition(), 56);
        if (!has(strf->dataPosition(), strf->dataSize())) {
            return fail(name + "strf data read error\n");
        }
        stream.format = get(strf->dataPosition(), strf->dataSize());
        if (const Chunk* indx = child(strl.children, "indx")) {
            stream.hasOpenDmlIndex = readIndex(indx->dataPosition(), indx->dataSize(), stream);
        }
        return true;
    }

    bool readIndex(std::uint64_t position, std::uint64_t size, PlainStream& stream) {
        const std::string where = "readIndex: stream[" + std::to_string(stream.ordinal) +
                                  "], pos: " + std::to_string(static_cast<std::int64_t>(position)) +
                                  ", size: " + std::to_string(size) + ": ";
        if (size < 24) {
            return fail(where + "index data size too small\n");
        }
        if (!has(position, size)) {
            return fail(where + "failed to read index data\n");
        }
        const std::uint64_t longs = number(position, 2);
        const std::uint64_t type = number(position + 3, 1);
        const std::uint64_t claimed = word(position + 4);
        const std::uint64_t used = longs == 0 ? claimed : std::min(claimed, (size - 24) / (longs * 4));
        if (used < claimed) {
            fail(where + "index data size is smaller than required by nEntriesInUse (" +
                 std::to_string(claimed) + ")\n");
        }
        if (type == 0 && longs == 4) {
            const Bytes entries = get(position + 24, used * 16);
            stream.superIndex.insert(stream.superIndex.end(), entries.begin(), entries.end());
            bool complete = true;
            for (std::uint64_t i = 0; i < used; ++i) {
                const std::uint64_t offset = number(position + 24 + i * 16, 8);
                const std::uint64_t length = word(position + 32 + i * 16);
                if (!readIndex(offset + 8, length < 8 ? 0 : length - 8, stream)) {
                    complete = false;
                }
            }
            return complete;
        }
        if (type == 1 && longs == 2) {
            stream.standardIndexes.push_back(get(position, 24 + used * 8));
            return true;
        }
        return fail(where + "unknown bIndexType: " + std::to_string(type) +
                    ", wLongsPerEntry: " + std::to_string(longs) + "\n");
    }

    void buildLists(const Bytes& table, const Chunk* movi) {
        const auto wordIn = [](const Bytes& bytes, std::size_t at) {
            std::uint32_t value = 0;
            for (std::size_t i = 4; i-- > 0;) {
                value = value << 8 | bytes.at(at + i);
            }
            return value;
        };
        for (std::size_t p = 0; p < m_result.streams.size(); ++p) {
            PlainStream& stream = m_result.streams[p];
            std::uint64_t start = 0;
            for (std::size_t at = 0; movi != nullptr && p < 100 && at < table.size(); at += 16) {
                if (table[at] != '0' + p / 10 || table[at + 1] != '0' + p % 10) {
                    continue;
                }
                const std::uint32_t size = wordIn(table, at + 12);
                stream.legacyEntries.push_back(PlainEntry{movi->offset + 16 + wordIn(table, at + 8), size,
                                                          start, (wordIn(table, at + 4) & 0x10) != 0});
                start += size;
            }
            start = 0;
            for (const Bytes& block : stream.standardIndexes) {
                const std::uint64_t base = wordIn(block, 12) | std::uint64_t{wordIn(block, 16)} << 32;
                for (std::size_t at = 24; at < block.size(); at += 8) {
                    const std::uint32_t size = wordIn(block, at + 4);
                    stream.openDmlEntries.push_back(
                        PlainEntry{base + wordIn(block, at), size & 0x7FFFFFFF, start, size < 0x80000000});
                    start += size & 0x7FFFFFFF;
                }
            }
        }
    }

    const Bytes& m_file;
    ByteRange m_unreadable;
    PlainAvi m_result;
};

template <typename T>
Bytes bytesOf(const T& value) {
    Bytes result(sizeof(T));
    std::memcpy(result.data(), &value, sizeof(T));
    return result;
}

std::vector<PlainEntry> asPlain(const ChunkList& list) {
    std::vector<PlainEntry> result;
    result.reserve(list.size());
    for (const IndexEntry& entry : list) {
        result.push_back(PlainEntry{entry.offset, entry.size, entry.start, entry.keyFrame});
    }
    return result;
}

}  // namespace

PlainAvi parsePlainly(const Bytes& file, ByteRange unreadable) {
    return PlainParser(file, unreadable).parse();
}

PlainAvi asPlain(const AviReader& reader, bool usable) {
    PlainAvi result;
    result.usable = usable;
    result.errors = reader.errorText();
    result.mainHeader = bytesOf(reader.mainHeader);
    result.extHeader = bytesOf(reader.extHeader);
    for (const auto& stream : reader.streams) {
        PlainStream plain;
        plain.ordinal = stream->index;
        plain.header = bytesOf(stream->header);
        plain.format = stream->format;
        for (const AviSuperIndexEntry& entry : stream->superIndex) {
            const Bytes bytes = bytesOf(entry);
            plain.superIndex.insert(plain.superIndex.end(), bytes.begin(), bytes.end());
        }
        // The entries stand in the chunk list only, one index behind the other.
        ChunkList::Iterator chunk = stream->openDmlEntries.begin();
        for (const StandardIndex& index : stream->standardIndexes) {
            Bytes bytes = bytesOf(index.header);
            for (std::uint32_t i = 0; i < index.entries; ++i, ++chunk) {
                const IndexEntry entry = *chunk;
                const std::uint32_t deltaFrame = entry.keyFrame ? 0 : kStdIndexDeltaFrame;
                const Bytes entryBytes = bytesOf(
                    AviStdIndexEntry{static_cast<std::uint32_t>(entry.offset - index.header.qwBaseOffset),
                                     entry.size | deltaFrame});
                bytes.insert(bytes.end(), entryBytes.begin(), entryBytes.end());
            }
            plain.standardIndexes.push_back(std::move(bytes));
        }
        plain.hasOpenDmlIndex = stream->hasOpenDmlIndex;
        plain.legacyEntries = asPlain(stream->legacyEntries);
        plain.openDmlEntries = asPlain(stream->openDmlEntries);
        result.streams.push_back(std::move(plain));
    }
    return result;
}

std::string firstDifference(const PlainAvi& expected, const PlainAvi& actual) {
    if (expected.usable != actual.usable) {
        return expected.usable ? "should be usable" : "should not be usable";
    }
    if (expected.errors != actual.errors) {
        return "errors: expected\n" + expected.errors + "got\n" + actual.errors;
    }
    if (expected.mainHeader != actual.mainHeader) {
        return "main header";
    }
    if (expected.extHeader != actual.extHeader) {
        return "extended header";
    }
    if (expected.streams.size() != actual.streams.size()) {
        return "streams: expected " + std::to_string(expected.streams.size()) + ", got " +
               std::to_string(actual.streams.size());
    }
    for (std::size_t i = 0; i < expected.streams.size(); ++i) {
        const PlainStream& want = expected.streams[i];
        const PlainStream& have = actual.streams[i];
        const std::string name = "stream " + std::to_string(i) + ": ";
        if (want.ordinal != have.ordinal) {
            return name + "ordinal";
        }
        if (want.header != have.header) {
            return name + "header";
        }
        if (want.format != have.format) {
            return name + "format";
        }
        if (want.superIndex != have.superIndex) {
            return name + "super index";
        }
        if (want.standardIndexes != have.standardIndexes) {
            return name + "standard indexes";
        }
        if (want.hasOpenDmlIndex != have.hasOpenDmlIndex) {
            return name + "hasOpenDmlIndex";
        }
        if (want.legacyEntries != have.legacyEntries) {
            return name + "legacy list";
        }
        if (want.openDmlEntries != have.openDmlEntries) {
            return name + "OpenDML list";
        }
    }
    return "none";
}

}  // namespace orvantis::test
