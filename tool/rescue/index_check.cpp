#include "tool/rescue/index_check.h"

#include <algorithm>
#include <utility>

#include "avi/avi_reader.h"
#include "avi/avi_stream.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/media/index_probe.h"

namespace simhost::tool {
namespace {

// A storage for the plug-in's reader.
class ReadOnlyFile final : public fileio::File {
 public:
    explicit ReadOnlyFile(Storage& storage) : m_storage(storage) {}

    bool open(const char* /*utf8Path*/, int /*mode*/) override { return true; }
    void close() override {}
    std::int64_t size() override { return static_cast<std::int64_t>(m_storage.size()); }
    std::int64_t tell() override { return m_at; }
    bool seek(std::int64_t offset) override {
        m_at = offset < 0 ? m_at : offset;
        return offset >= 0;
    }
    std::uint64_t read(void* buffer, std::uint64_t count) override {
        try {
            const std::size_t got =
                m_storage.read(static_cast<std::uint64_t>(m_at),
                               {static_cast<std::uint8_t*>(buffer), static_cast<std::uint32_t>(count)});
            m_at += static_cast<std::int64_t>(got);
            return got;
        } catch (const ToolError&) {
            return 0;
        }
    }
    std::uint64_t write(const void* /*buffer*/, std::uint64_t /*count*/) override { return 0; }

 private:
    Storage& m_storage;
    std::int64_t m_at = 0;
};

class IndexMatch {
 public:
    explicit IndexMatch(ClipScan& scan) : m_scan(scan), m_named(scan.chunks.size()) {}

    // Entries of an index that lead to no whole chunk of the stream.
    std::uint64_t match(const orvantis::ChunkList& entries, const IndexProbe& probe, unsigned stream) {
        std::uint64_t nowhere = 0;
        std::size_t next = 0;  // indexes go through the file in order
        for (const orvantis::IndexEntry& entry : entries) {
            const std::uint64_t offset = probe.positionOf(entry);
            while (next < m_scan.chunks.size() && next < m_last + kNear &&
                   m_scan.chunks[next].offset() < offset) {
                ++next;
            }
            if (next >= m_scan.chunks.size() || m_scan.chunks[next].offset() != offset) {
                next = m_scan.chunks.firstFrom(offset);
            }
            m_last = next;
            if (next >= m_scan.chunks.size() || m_scan.chunks[next].offset() != offset ||
                m_scan.chunks[next].size() != entry.size || m_scan.chunks[next].stream() != stream) {
                ++nowhere;
                continue;
            }
            if (!m_named[next] && !entry.keyFrame) {
                m_scan.chunks[next].makeDelta();
            }
            m_named[next] = true;
        }
        return nowhere;
    }

    bool isNamed(std::size_t chunk) const { return m_named[chunk]; }

 private:
    static constexpr std::size_t kNear = 64;

    ClipScan& m_scan;
    std::vector<bool> m_named;
    std::size_t m_last = 0;
};

void countChunks(const ClipScan& scan, IndexCheck& out) {
    out.streams.resize(scan.headers.streams.size());
    std::vector<std::uint64_t> timed(out.streams.size());
    for (std::size_t i = 0; i < scan.chunks.size(); ++i) {
        const FoundChunk& chunk = scan.chunks[i];
        StreamCheck& stream = out.streams[chunk.stream()];
        ++stream.chunks;
        stream.empty += chunk.size() == 0 ? 1U : 0U;
        stream.bytes += chunk.size();
        stream.found = true;
        stream.last = chunk;
        timed[chunk.stream()] += chunk.isPalette() ? 0U : 1U;
    }
    for (std::size_t i = 0; i < out.streams.size(); ++i) {
        out.streams[i].length = scan.headers.streams[i].lengthOf(timed[i], out.streams[i].bytes);
    }
}

}  // namespace

bool IndexCheck::gains() const noexcept {
    const bool any =
        std::any_of(streams.begin(), streams.end(), [](const StreamCheck& s) { return s.chunks > 0; });
    return any &&
           (!refused.empty() || std::any_of(streams.begin(), streams.end(), [](const StreamCheck& stream) {
               return stream.leftOut > 0 || stream.nowhere > 0;
           }));
}

IndexCheck checkIndexes(Storage& file, ClipScan& scan) {
    IndexCheck out;
    countChunks(scan, out);
    ReadOnlyFile input(file);
    orvantis::AviReader reader;
    const bool usable = reader.parse(input, false);
    if (!usable) {
        out.refused = reader.errorText();
        out.refused.erase(out.refused.find_last_not_of('\n') + 1);
    }
    std::optional<std::uint64_t> moviOffset;
    if (!reader.chunks.empty()) {
        const orvantis::RiffChunk* movi =
            orvantis::findList(reader.chunks.front().children, orvantis::riffCode("movi"));
        moviOffset = movi == nullptr ? std::nullopt : std::optional(movi->offset);
    }
    IndexMatch inForce(scan);
    const std::size_t streams = std::min(out.streams.size(), reader.streams.size());
    for (std::size_t i = 0; usable && i < streams; ++i) {
        const orvantis::AviStream& stream = *reader.streams[i];
        StreamCheck& check = out.streams[i];
        check.entries = stream.entries().size();
        check.index = stream.entries().empty() ? StreamCheck::Index::kNone
                      : stream.hasOpenDmlIndex ? StreamCheck::Index::kOpenDml
                                               : StreamCheck::Index::kOld;
        check.nowhere = inForce.match(stream.entries(), {}, static_cast<unsigned>(i));
    }
    for (std::size_t i = 0; i < scan.chunks.size(); ++i) {
        out.streams[scan.chunks[i].stream()].leftOut += inForce.isNamed(i) ? 0U : 1U;
    }
    // An index that the plug-in does not use, or that counts from a wrong place, still tells the key frames.
    for (std::size_t i = 0; usable && i < streams; ++i) {
        const orvantis::AviStream& stream = *reader.streams[i];
        const auto number = static_cast<unsigned>(i);
        (void)inForce.match(stream.openDmlEntries, {}, number);
        (void)inForce.match(stream.legacyEntries, probeIndex(input, stream.legacyEntries, moviOffset),
                            number);
    }
    return out;
}

}  // namespace simhost::tool
