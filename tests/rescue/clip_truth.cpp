#include "tests/rescue/clip_truth.h"

#include <algorithm>
#include <set>

#include "avi/avi_reader.h"
#include "avi/avi_stream.h"
#include "avi/four_char_code.h"

namespace simhost::tool {
namespace {

class TruthFile final : public fileio::File {
 public:
    explicit TruthFile(Storage& storage) : m_storage(storage) {}
    bool open(const char*, int) override { return true; }
    void close() override {}
    std::int64_t size() override { return static_cast<std::int64_t>(m_storage.size()); }
    std::int64_t tell() override { return m_at; }
    bool seek(std::int64_t offset) override {
        m_at = offset;
        return offset >= 0;
    }
    std::uint64_t read(void* buffer, std::uint64_t count) override {
        const std::size_t got =
            m_storage.read(static_cast<std::uint64_t>(m_at),
                           {static_cast<std::uint8_t*>(buffer), static_cast<std::size_t>(count)});
        m_at += static_cast<std::int64_t>(got);
        return got;
    }
    std::uint64_t write(const void*, std::uint64_t) override { return 0; }

 private:
    Storage& m_storage;
    std::int64_t m_at = 0;
};

void addPoints(Storage& file, std::uint64_t at, std::uint64_t end, std::set<std::uint64_t>& out) {
    const auto around = [&out, &file](std::uint64_t place) {
        for (const std::int64_t by : {-1, 0, 1, 2, 4, 7, 8, 9, 12}) {
            const std::uint64_t point = place + static_cast<std::uint64_t>(by);
            if (point <= file.size()) {
                out.insert(point);
            }
        }
    };
    while (at + 8 <= end) {
        std::uint8_t head[12] = {};
        (void)file.read(at, head);
        const std::uint32_t code = wordOf(head);
        const std::uint64_t size = wordOf(head + 4);
        around(at);
        around(at + 8 + size);
        out.insert(std::min(at + 8 + size / 2, file.size()));
        if (code == orvantis::riffCode("RIFF") || code == orvantis::riffCode("LIST")) {
            addPoints(file, at + 12, std::min(at + 8 + size, end), out);
        }
        at += 8 + size + size % 2;
    }
}

}  // namespace

std::vector<ChunkFact> indexedChunks(Storage& file) {
    std::vector<ChunkFact> out;
    TruthFile input(file);
    orvantis::AviReader reader;
    if (!reader.parse(input, false)) {
        return out;
    }
    for (std::size_t s = 0; s < reader.streams.size(); ++s) {
        for (const orvantis::IndexEntry& entry : reader.streams[s]->entries()) {
            out.push_back({static_cast<unsigned>(s), entry.offset, entry.size});
        }
    }
    std::sort(out.begin(), out.end(),
              [](const ChunkFact& a, const ChunkFact& b) { return a.offset < b.offset; });
    return out;
}

std::vector<ChunkFact> wholeBefore(const std::vector<ChunkFact>& chunks, std::uint64_t size) {
    std::vector<ChunkFact> out;
    std::copy_if(chunks.begin(), chunks.end(), std::back_inserter(out),
                 [size](const ChunkFact& chunk) { return chunk.offset + chunk.size <= size; });
    return out;
}

std::vector<ChunkFact> foundChunks(const ClipScan& scan) {
    std::vector<ChunkFact> out;
    for (std::size_t i = 0; i < scan.chunks.size(); ++i) {
        out.push_back({scan.chunks[i].stream(), scan.chunks[i].offset(), scan.chunks[i].size()});
    }
    return out;
}

std::vector<std::uint64_t> structuralPoints(Storage& file) {
    std::set<std::uint64_t> out;
    addPoints(file, 0, file.size(), out);
    return {out.begin(), out.end()};
}

std::vector<StreamData> dataOf(Storage& file, const std::vector<ChunkFact>& chunks, std::size_t streams) {
    std::vector<StreamData> out(streams);
    TestBytes bytes;
    for (const ChunkFact& chunk : chunks) {
        bytes.resize(chunk.size);
        if (chunk.stream >= streams || file.read(chunk.offset, bytes) != chunk.size) {
            continue;
        }
        StreamData& stream = out[chunk.stream];
        stream.sizes.push_back(chunk.size);
        for (const std::uint8_t byte : bytes) {
            stream.hash = (stream.hash ^ byte) * 0x100000001B3;
        }
    }
    return out;
}

}  // namespace simhost::tool
