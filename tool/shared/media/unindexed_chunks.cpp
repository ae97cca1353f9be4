#include "tool/shared/media/unindexed_chunks.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>
#include <string_view>

namespace simhost::tool {
namespace {

constexpr std::uint64_t kUnindexedHeader = 8;
constexpr std::uint64_t kUnindexedList = 12;

class UnindexedWalk {
 public:
    UnindexedWalk(fileio::File& file, std::size_t streams)
        : m_file(file),
          m_size(static_cast<std::uint64_t>(std::max<std::int64_t>(file.size(), 0))),
          m_streams(streams) {}

    void add(std::uint64_t at, std::uint64_t end) {
        end = std::min(end, m_size);
        std::array<char, kUnindexedHeader> head{};
        while (at < end && end - at >= head.size() && m_readsLeft > 0 && readAt(at, head)) {
            const std::string_view code(head.data(), 4);
            std::uint32_t size = 0;
            std::memcpy(&size, head.data() + 4, sizeof size);
            if (code == "RIFF" || code == "LIST") {
                at += kUnindexedList;
                continue;
            }
            if (!std::all_of(code.begin(), code.end(), [](char c) { return c >= 0x20 && c < 0x7F; })) {
                return;
            }
            const std::uint64_t dataEnd = at + kUnindexedHeader + size;
            if (dataEnd > end) {
                return;  // cut off
            }
            count += isStreams(code) ? 1U : 0U;
            at = dataEnd + size % 2;
        }
    }

    std::uint64_t count = 0;

 private:
    bool readAt(std::uint64_t at, std::array<char, kUnindexedHeader>& head) {
        --m_readsLeft;
        return m_file.seek(static_cast<std::int64_t>(at)) &&
               m_file.read(head.data(), head.size()) == head.size();
    }

    // "00dc", but not "00ix"
    bool isStreams(std::string_view code) const {
        const auto digit = [](char c) { return c >= '0' && c <= '9'; };
        const auto letter = [](char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0; };
        if (!digit(code[0]) || !digit(code[1]) || !letter(code[2]) || !letter(code[3]) ||
            code.ends_with("ix")) {
            return false;
        }
        return static_cast<std::size_t>((code[0] - '0') * 10 + code[1] - '0') < m_streams;
    }

    fileio::File& m_file;
    std::uint64_t m_size;
    std::size_t m_streams;
    std::size_t m_readsLeft = kMostUnindexedReads;
};

}  // namespace

std::uint64_t countUnindexedChunks(fileio::File& file,
                                   std::vector<std::pair<std::uint64_t, std::uint64_t>> chunks,
                                   std::optional<std::uint64_t> dataStart, std::size_t streams) {
    UnindexedWalk walk(file, streams);
    std::sort(chunks.begin(), chunks.end());
    if (chunks.empty() && !dataStart) {
        return 0;
    }
    std::uint64_t end = chunks.empty() ? *dataStart : chunks.front().first;
    for (const auto& [begin, chunkEnd] : chunks) {
        if (begin > end) {
            walk.add(end, begin);
        }
        end = std::max(end, chunkEnd);
    }
    walk.add(end, static_cast<std::uint64_t>(std::max<std::int64_t>(file.size(), 0)));
    return walk.count;
}

}  // namespace simhost::tool
