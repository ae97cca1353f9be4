#include "tool/excerpt/structure_map.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <string_view>

#include "avi/avi_reader.h"
#include "avi/avi_stream.h"
#include "avi/riff_walk.h"

namespace simhost::tool {
namespace {

using orvantis::RiffChunk;
using orvantis::riffCode;

constexpr std::uint64_t kHeader = 8;
constexpr std::uint64_t kListHeader = 12;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
// "01wb": data of a stream.
bool isStreamCode(std::string_view code) {
    return isDigit(code[0]) && isDigit(code[1]) && isLetter(code[2]) && isLetter(code[3]) &&
           !code.ends_with("ix");
}
// "ix00", "00ix", "idx1", "indx"
bool isIndexCode(std::string_view code) {
    return (code.starts_with("ix") && isDigit(code[2]) && isDigit(code[3])) ||
           (code.ends_with("ix") && isDigit(code[0]) && isDigit(code[1])) || code == "idx1" || code == "indx";
}
// Chunks whose contents say how the file is built, and which program wrote it.
bool isKept(std::string_view code) {
    constexpr std::string_view kKept[] = {"avih", "strh", "strf", "dmlh", "vprp", "ISFT"};
    return isIndexCode(code) || std::ranges::find(kKept, code) != std::end(kKept);
}

class Map {
 public:
    Map(fileio::File& file, const std::function<void(std::uint64_t)>& step)
        : m_file(file),
          m_step(step),
          m_size(static_cast<std::uint64_t>(std::max<std::int64_t>(file.size(), 0))) {}

    std::vector<FileRange> make() {
        const auto first = headerAt(0);
        if (!first || first->code() != "RIFF") {
            return {};
        }
        walkForms();
        walkOn();
        walkAsThePluginDoes();
        readIndexes();
        return without(merged(std::move(m_kept)), merged(std::move(m_payload)), merged(std::move(m_headers)));
    }

 private:
    struct Header {
        std::array<char, 4> id{};
        std::uint32_t size = 0;
        std::array<char, 4> type{};
        bool hasType = false;

        std::string_view code() const { return {id.data(), id.size()}; }
        std::string_view listType() const { return {type.data(), hasType ? type.size() : 0}; }
        bool isList() const { return code() == "RIFF" || code() == "LIST"; }
    };

    // Read in pieces: headers of small chunks lie close to one another.
    std::optional<Header> headerAt(std::uint64_t position) {
        m_step(position);
        if (position > m_size || m_size - position < kHeader) {
            return std::nullopt;
        }
        const std::uint64_t wanted = std::min(m_size - position, kListHeader);
        if (position < m_bufferStart || position + wanted > m_bufferStart + m_bufferBytes) {
            m_bufferStart = position;
            m_bufferBytes = m_file.seek(static_cast<std::int64_t>(position))
                                ? m_file.read(m_buffer.data(), m_buffer.size())
                                : 0;
            if (m_bufferBytes < kHeader) {
                return std::nullopt;
            }
        }
        const char* at = m_buffer.data() + (position - m_bufferStart);
        Header out;
        std::memcpy(out.id.data(), at, out.id.size());
        std::memcpy(&out.size, at + 4, sizeof out.size);
        out.hasType = m_bufferStart + m_bufferBytes - position >= kListHeader;
        if (out.hasType) {
            std::memcpy(out.type.data(), at + kHeader, out.type.size());
        }
        return out;
    }

    void add(std::vector<FileRange>& to, std::uint64_t begin, std::uint64_t bytes) const {
        const std::uint64_t end = std::min(m_size, begin + std::min(bytes, m_size));
        if (begin >= end) {
            return;
        }
        if (!to.empty() && to.back().end == begin) {
            to.back().end = end;
        } else {
            to.push_back({begin, end});
        }
    }
    void keep(std::uint64_t begin, std::uint64_t bytes) { add(m_kept, begin, bytes); }
    void keepHeader(std::uint64_t begin, std::uint64_t bytes) { add(m_headers, begin, bytes); }

    // Every form of the file, one behind the other.
    void walkForms() {
        for (std::uint64_t at = 0; at < m_size;) {
            const auto header = headerAt(at);
            if (!header || header->code() != "RIFF" || !header->hasType) {
                break;
            }
            keepHeader(at, kListHeader);
            const std::uint64_t next = at + kHeader + header->size + header->size % 2;
            // A recorder that died has left no size behind.
            walkLevel(at + kListHeader, header->size <= 4 ? m_size : std::min(next, m_size), 0);
            if (next <= at + kHeader) {
                break;
            }
            at = next;
        }
    }

    // A recorder that died may have left sizes of an earlier moment behind: data goes on where the last chunk
    // ends.
    void walkOn() {
        const auto header = m_behindData == 0 ? std::nullopt : headerAt(m_behindData);
        if (header && (isStreamCode(header->code()) || isIndexCode(header->code()) || header->isList())) {
            walkLevel(m_behindData, m_size, 0);
        }
    }

    // Chunks up to `end`, or to the first that is none.
    void walkLevel(std::uint64_t at, std::uint64_t end, int depth) {
        while (at < end) {
            const auto header = headerAt(at);
            if (!header) {
                return;
            }
            const std::string_view code = header->code();
            const std::uint64_t next = at + kHeader + header->size + header->size % 2;
            if (header->isList() && header->hasType) {
                keepHeader(at, kListHeader);
                const bool open = header->size <= 4 && header->listType() == "movi";
                if (depth < orvantis::kMaxListDepth) {
                    walkLevel(at + kListHeader, open ? end : std::min(next, end), depth + 1);
                }
                if (open) {
                    return;
                }
            } else if (isStreamCode(code)) {
                keepHeader(at, kHeader);
                m_behindData = std::max(m_behindData, next);
                add(m_payload, at + kHeader,
                    std::min<std::uint64_t>(header->size, end - std::min(end, at + kHeader)));
            } else if (isKept(code)) {
                keepHeader(at, kHeader);
                keep(at + kHeader, header->size);
            } else if (std::ranges::all_of(code, [](char c) { return c >= 0x20 && c < 0x7F; }) &&
                       next <= end) {
                keepHeader(at, kHeader);
            } else {
                return;  // damage
            }
            at = next;
        }
    }

    // What its walk comes by, however odd, is what it goes by.
    void walkAsThePluginDoes() {
        constexpr std::array kDescend = {riffCode("AVI "), riffCode("hdrl"), riffCode("strl"),
                                         riffCode("odml")};
        constexpr std::array kStop = {riffCode("AVI ")};
        orvantis::FileWindow input;
        input.attach(m_file, m_size);
        std::vector<RiffChunk> chunks;
        (void)orvantis::walk(input, {0, m_size}, {kDescend, kStop}, chunks);
        input.release();
        addTree(chunks);
    }

    void addTree(const std::vector<RiffChunk>& chunks) {
        for (const RiffChunk& chunk : chunks) {
            keepHeader(chunk.offset, chunk.isList() ? kListHeader : kHeader);
            std::array<char, 4> code{};
            std::memcpy(code.data(), &chunk.id, code.size());
            if (!chunk.isList() && isKept({code.data(), code.size()})) {
                keep(chunk.dataPosition(), chunk.dataSize());
            }
            addTree(chunk.children);
        }
    }

    // Index chunks wherever they lie, and the headers of the chunks that they lead to.
    void readIndexes() {
        orvantis::AviReader reader;
        if (!m_file.seek(0) || !reader.parse(m_file, false)) {
            return;
        }
        const std::vector<FileRange> known = merged(m_headers);
        const auto isKnown = [&known](std::uint64_t at) {
            const auto next = std::ranges::upper_bound(known, at, {}, &FileRange::begin);
            return next != known.begin() && std::prev(next)->end >= at + kHeader;
        };
        for (const auto& stream : reader.streams) {
            for (const orvantis::AviSuperIndexEntry& entry : stream->superIndex) {
                readNamedIndex(entry.qwOffset, entry.dwSize);
            }
            for (const orvantis::IndexEntry& entry : stream->entries()) {
                const std::uint64_t at = entry.offset < kHeader ? 0 : entry.offset - kHeader;
                const auto header = isKnown(at) ? std::nullopt : headerAt(at);
                if (header && isStreamCode(header->code())) {
                    keepHeader(at, kHeader);
                }
            }
        }
    }

    void readNamedIndex(std::uint64_t offset, std::uint32_t size) {
        const auto header = headerAt(offset);
        if (!header) {
            return;
        }
        if (isIndexCode(header->code()) && std::uint64_t{header->size} + kHeader == size) {
            keepHeader(offset, size);  // the chunk that is meant, also where a damaged one claims its place
        } else {
            keep(offset + kHeader, size < kHeader ? 0 : size - kHeader);
        }
    }

    static std::vector<FileRange> merged(std::vector<FileRange> ranges) {
        std::ranges::sort(ranges, {}, &FileRange::begin);
        std::vector<FileRange> out;
        for (const FileRange& range : ranges) {
            if (!out.empty() && range.begin <= out.back().end) {
                out.back().end = std::max(out.back().end, range.end);
            } else {
                out.push_back(range);
            }
        }
        return out;
    }

    // Contents that lie in pictures or sound are pictures or sound, whatever leads there. Headers are none.
    static std::vector<FileRange> without(const std::vector<FileRange>& kept,
                                          const std::vector<FileRange>& payload,
                                          const std::vector<FileRange>& headers) {
        std::vector<FileRange> out = headers;
        auto next = payload.begin();
        for (const FileRange& range : kept) {
            std::uint64_t at = range.begin;
            while (next != payload.end() && next->end <= at) {
                ++next;
            }
            for (auto each = next; each != payload.end() && each->begin < range.end; ++each) {
                if (at < each->begin) {
                    out.push_back({at, each->begin});
                }
                at = std::max(at, each->end);
            }
            if (at < range.end) {
                out.push_back({at, range.end});
            }
        }
        return merged(std::move(out));
    }

    fileio::File& m_file;
    const std::function<void(std::uint64_t)>& m_step;
    std::uint64_t m_size;
    std::vector<FileRange> m_kept;     // contents
    std::vector<FileRange> m_headers;  //
    std::vector<FileRange> m_payload;  //
    std::array<char, 4096> m_buffer{};
    std::uint64_t m_behindData = 0;  // of all chunks of streams
    std::uint64_t m_bufferStart = 0;
    std::uint64_t m_bufferBytes = 0;
};

}  // namespace

std::vector<FileRange> structureOf(fileio::File& file, const std::function<void(std::uint64_t)>& step) {
    return Map(file, step).make();
}

}  // namespace simhost::tool
