#include "tool/shared/media/index_gaps.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <string_view>

namespace simhost::tool {
namespace {

constexpr std::uint64_t kGapHeaderBytes = 8;
constexpr std::uint64_t kListHeader = 12;
// Headers read in all; beyond them everything is what no index mentions.
constexpr std::size_t kMostHeaders = 20'000;

struct Header {
    std::array<char, 4> code{};
    std::uint32_t size = 0;

    std::string_view text() const { return {code.data(), code.size()}; }
};

std::optional<Header> headerAt(fileio::File& file, std::uint64_t position) {
    std::array<std::uint8_t, kGapHeaderBytes> bytes{};
    if (!file.seek(static_cast<std::int64_t>(position)) ||
        file.read(bytes.data(), bytes.size()) != bytes.size()) {
        return std::nullopt;
    }
    Header out;
    std::memcpy(out.code.data(), bytes.data(), out.code.size());
    for (std::size_t i = 0; i < 4; ++i) {
        out.size |= std::uint32_t{bytes[4 + i]} << (8 * i);
    }
    return out;
}

// Chunks that belong to the container and hold no data of a stream.
bool isContainers(std::string_view code) {
    return code == "JUNK" || code == "idx1" || code == "indx" || code.starts_with("ix") ||
           code.ends_with("ix");
}

bool isChunkCode(std::string_view code) {
    return std::all_of(code.begin(), code.end(), [](char c) { return c >= 0x20 && c < 0x7F; });
}

class GapWalk {
 public:
    explicit GapWalk(fileio::File& file) : m_file(file) {}

    // What of [begin, end) the container does not explain.
    void add(std::uint64_t begin, std::uint64_t end) {
        std::uint64_t unexplained = begin;  // from here to `at`
        std::uint64_t at = begin;
        while (at < end && end - at >= kGapHeaderBytes && m_headersLeft > 0) {
            --m_headersLeft;
            const auto header = headerAt(m_file, at);
            if (!header || !isChunkCode(header->text())) {
                break;  // no chunks: lost data up to the end
            }
            const std::uint64_t next = at + kGapHeaderBytes + header->size + header->size % 2;
            const bool isList = header->text() == "LIST" || header->text() == "RIFF";
            if (isList || isContainers(header->text())) {
                put(unexplained, at);
                at = std::min(isList ? at + kListHeader : next, end);
                unexplained = at;
            } else {
                at = std::min(next, end);
            }
        }
        put(unexplained, end);
    }

    std::vector<Gap> gaps;

 private:
    void put(std::uint64_t begin, std::uint64_t end) {
        if (begin < end && end - begin >= kLeastGap) {
            gaps.push_back({begin, end - begin});
        }
    }

    fileio::File& m_file;
    std::size_t m_headersLeft = kMostHeaders;
};

}  // namespace

std::vector<Gap> findGaps(fileio::File& file, std::vector<std::pair<std::uint64_t, std::uint64_t>> chunks) {
    GapWalk walk(file);
    std::sort(chunks.begin(), chunks.end());
    std::uint64_t end = chunks.empty() ? 0 : chunks.front().first;
    for (const auto& [begin, chunkEnd] : chunks) {
        if (begin > end && begin - end >= kLeastGap) {
            walk.add(end, begin);
        }
        end = std::max(end, chunkEnd);
    }
    return std::move(walk.gaps);
}

}  // namespace simhost::tool
