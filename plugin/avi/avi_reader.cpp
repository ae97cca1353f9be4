#include "avi/avi_reader.h"

#include <algorithm>
#include <array>
#include <exception>
#include <optional>
#include <string_view>

#include "avi/avi_index.h"
#include "avi/avi_stream.h"
#include "avi/problems.h"

namespace orvantis {

namespace {

constexpr std::array kDescendTypes = {riffCode("AVI "), riffCode("hdrl"), riffCode("strl"), riffCode("odml")};
// The walk ends behind the first form: data of OpenDML's further forms is reached through the index.
constexpr std::array kStopKeys = {riffCode("AVI ")};
constexpr WalkRules kWalkRules{kDescendTypes, kStopKeys};

// A stream list with its strh and strf takes 84 bytes. More lists than this lie over one another.
constexpr std::uint64_t kStreamListBytes = 64;
constexpr std::uint64_t kSpareStreams = 1024;
// Room for formats beyond what lists that do not overlap could hold.
constexpr std::uint64_t kSpareFormatBytes = 1024 * 1024;

// A tree larger than any real file's is given up before the indexes take their memory. Real files have some
// twenty chunks.
constexpr std::size_t kMaxKeptChunks = 65'536;

constexpr std::string_view kCorrupt = "riff structure is corrupt or invalid\n";

std::size_t countChunks(const std::vector<RiffChunk>& list) noexcept {
    std::size_t count = list.size();
    for (const RiffChunk& chunk : list) {
        count += countChunks(chunk.children);  // at most kMaxListDepth deep
    }
    return count;
}

constexpr ProblemPlace kInStructure{ProblemPlace::Part::kStructure};
constexpr ProblemPlace kInHeaders{ProblemPlace::Part::kHeaders};
constexpr ProblemPlace kAtTheEnd{ProblemPlace::Part::kEnd};

void addStreamProblem(Problems& problems, std::uint64_t ordinal, const char* problem) {
    problems.add({ProblemPlace::Part::kStreamList, ordinal},
                 "stream[" + std::to_string(ordinal) + "]: " + problem + "\n");
}

}  // namespace

AviReader::AviReader() = default;

AviReader::~AviReader() = default;

void AviReader::reset() noexcept {
    chunks = {};
    errors.clear();
    mainHeader = {};
    extHeader = {};
    streams.clear();
    m_restOfWalk.reset();
    m_pendingIndexes.clear();
    m_indexesPending = false;
}

bool AviReader::parse(fileio::File& source, bool headerOnly) {
    reset();
    file = &source;
    bool usable = false;
    try {
        usable = parseHeaders(headerOnly);
    } catch (const std::exception&) {
        // Out of memory for the structure itself, or a file that breaks its promise not to throw.
        usable = false;
        errors.add(kAtTheEnd, kCorrupt);
    }
    m_indexesPending = usable;
    if (!usable) {
        dropIndexes();
    }
    errors.putInOrder();
    if (usable && !headerOnly) {
        readIndexes();
    }
    return usable;
}

bool AviReader::parseHeaders(bool headerOnly) {
    const auto fileSize = static_cast<std::uint64_t>(std::max<std::int64_t>(file->size(), 0));
    const auto start = static_cast<std::uint64_t>(file->tell());
    m_input.attach(*file, fileSize);
    m_formatBytesLeft = fileSize + kSpareFormatBytes;

    std::uint32_t first[3];
    if (!m_input.readSmall(start, first, sizeof(first)) || first[0] != riffCode("RIFF") ||
        first[2] != riffCode("AVI ")) {
        errors.add(kInHeaders, "file doesn't look like AVI (first 12 bytes is not 'RIFF'....'AVI ')");
        return false;
    }
    // What lies behind movi is far away in the file and nothing but indexes: a file that is refused for what
    // its headers say is not asked for it.
    const StartOfWalk walked = walkUpTo(m_input, {start, fileSize}, kWalkRules, riffCode("movi"), chunks);
    m_restOfWalk = walked.rest;
    if (!walked.sound) {
        errors.add(kInStructure, kCorrupt);
    }
    if (!headerOnly) {
        finishWalk();
    }
    // The rest may be damaged, which is told too.
    const auto fail = [&](const char* problem) {
        finishWalk();
        errors.add(kInHeaders, problem);
        return false;
    };
    if (chunks.empty()) {
        return fail("riff structure is empty\n");
    }
    // not covered when true: its first 12 bytes were just seen
    if (!chunks.front().isListOf(riffCode("AVI "))) {
        return fail("AVI chunk missing\n");
    }
    const std::vector<RiffChunk>& form = chunks.front().children;
    if (findList(form, riffCode("hdrl")) == nullptr) {
        finishWalk();  // headers behind the data
    }
    const RiffChunk* hdrl = findList(form, riffCode("hdrl"));
    if (hdrl == nullptr) {
        return fail("hdrl missing\n");
    }
    const RiffChunk* avih = findChunk(hdrl->children, riffCode("avih"));
    if (avih == nullptr) {
        return fail("avih missing\n");
    }
    AviMainHeader header;
    if (!readChunkData(*avih, &header, sizeof(header))) {
        return fail("avih data read error\n");
    }
    mainHeader = header;

    std::uint64_t ordinal = 0;
    for (const RiffChunk& child : hdrl->children) {
        if (child.isListOf(riffCode("strl"))) {
            addStream(child, ordinal);
            ++ordinal;
        } else if (child.isListOf(riffCode("odml"))) {
            readExtHeader(child);
        }
    }
    return true;
}

void AviReader::finishWalk() noexcept {
    if (!m_restOfWalk) {
        return;
    }
    const RestOfWalk rest = *m_restOfWalk;
    m_restOfWalk.reset();
    const bool sound = walkRest(m_input, rest, kWalkRules, chunks.front().children);
    // Damage of the first part is noted already.
    if (!sound && rest.sound) {
        errors.add(kInStructure, kCorrupt);
    }
}

void AviReader::addStream(const RiffChunk& strl, std::uint64_t ordinal) {
    const std::uint64_t maxStreams = m_input.fileSize() / kStreamListBytes + kSpareStreams;
    const std::size_t pendingBefore = m_pendingIndexes.size();
    try {
        if (streams.size() < maxStreams) {
            auto stream = std::make_unique<AviStream>(ordinal);
            if (parseStreamList(strl, *stream)) {
                streams.push_back(std::move(stream));
            }
            return;
        }
    } catch (const std::exception&) {
        // Out of memory: what was noted for the stream must not outlive it.
        m_pendingIndexes.resize(pendingBefore, PendingIndex{});
    }
    addStreamProblem(errors, ordinal, "strh data read error");
}

bool AviReader::parseStreamList(const RiffChunk& strl, AviStream& stream) {
    const auto fail = [&](const char* problem) {
        addStreamProblem(errors, stream.index, problem);
        return false;
    };
    const RiffChunk* strh = findChunk(strl.children, riffCode("strh"));
    if (strh == nullptr) {
        return fail("strh missing in strl");
    }
    const RiffChunk* strf = findChunk(strl.children, riffCode("strf"));
    if (strf == nullptr) {
        return fail("strf missing in strl");
    }
    if (!readChunkData(*strh, &stream.header, sizeof(stream.header))) {
        return fail("strh data read error");
    }

    const std::uint32_t formatSize = strf->dataSize();
    if (formatSize > m_formatBytesLeft || !m_input.holds(strf->dataPosition(), formatSize)) {
        return fail("strf data read error");
    }
    m_formatBytesLeft -= formatSize;
    try {
        stream.format.resize(formatSize);
    } catch (const std::exception&) {
        return fail("strf data read error");
    }
    if (!readChunkData(*strf, stream.format.data(), formatSize)) {
        return fail("strf data read error");
    }

    if (const RiffChunk* indx = findChunk(strl.children, riffCode("indx"))) {
        m_pendingIndexes.push_back(PendingIndex{&stream, indx->dataPosition(), indx->dataSize()});
    }
    return true;
}

void AviReader::readExtHeader(const RiffChunk& odml) {
    const RiffChunk* dmlh = findChunk(odml.children, riffCode("dmlh"));
    if (dmlh == nullptr) {
        return;
    }
    AviExtHeader header = extHeader;  // a shorter one leaves the rest of an earlier one
    const std::size_t count = std::min<std::size_t>(dmlh->dataSize(), sizeof(header));
    if (readChunkData(*dmlh, &header, count)) {
        extHeader = header;
    }
}

bool AviReader::readChunkData(const RiffChunk& chunk, void* dest, std::size_t count) noexcept {
    if (chunk.dataSize() < count) {
        return false;
    }
    if (count > FileWindow::kWindowBytes) {
        return m_input.readBulk(chunk.dataPosition(), dest, count);
    }
    return m_input.readSmall(chunk.dataPosition(), dest, count);
}

void AviReader::readIndexes() {
    if (!m_indexesPending) {
        return;
    }
    m_indexesPending = false;
    finishWalk();
    std::optional<RiffChunk> idx1;
    std::optional<RiffChunk> movi;
    const std::vector<RiffChunk>& form = chunks.front().children;
    if (const RiffChunk* found = findChunk(form, riffCode("idx1"))) {
        idx1 = *found;
    }
    if (const RiffChunk* found = findList(form, riffCode("movi"))) {
        movi = *found;
    }
    if (countChunks(chunks) > kMaxKeptChunks) {
        chunks = {};
    }
    IndexInput input(m_input);
    readOpenDmlIndexes(input);
    if (idx1 && idx1->dataSize() % sizeof(AviOldIndexEntry) != 0) {
        errors.add(kAtTheEnd, "idx1 size is not a multiple of index entry size\n");
    }
    buildChunkLists(input, idx1 ? &*idx1 : nullptr, movi ? &*movi : nullptr, streams);
    errors.putInOrder();
    dropIndexes();
}

void AviReader::dropIndexes() noexcept {
    m_indexesPending = false;
    m_restOfWalk.reset();
    m_pendingIndexes = {};
    m_input.release();
}

void AviReader::readOpenDmlIndexes(IndexInput& input) {
    if (m_pendingIndexes.empty()) {
        return;
    }
    try {
        OpenDmlIndexReader indexes(input, errors);
        for (const PendingIndex& pending : m_pendingIndexes) {
            pending.stream->hasOpenDmlIndex =
                indexes.readOpenDmlIndex(pending.position, pending.size, *pending.stream);
        }
    } catch (const std::exception&) {
        return;  // out of memory before the first read: every stream goes by idx1
    }
}

std::vector<std::size_t> AviReader::streamsOfType(std::uint32_t type) const {
    std::vector<std::size_t> result;
    for (std::size_t i = 0; i < streams.size(); ++i) {
        if (streams[i]->header.fccType == type) {
            result.push_back(i);
        }
    }
    return result;
}

}  // namespace orvantis
