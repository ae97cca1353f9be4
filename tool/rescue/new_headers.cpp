#include <algorithm>
#include <cstring>

#include "avi/four_char_code.h"
#include "tool/rescue/new_clip.h"

namespace simhost::tool {
namespace {

using orvantis::riffCode;

constexpr std::uint32_t kHasIndex = 0x10;  // AVIF_HASINDEX

std::uint32_t word(std::uint64_t value) {
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(value, 0xFFFFFFFF));
}

class Rebuild {
 public:
    Rebuild(const ClipHeaders& old, const std::vector<StreamTotals>& streams, std::uint64_t firstFormFrames,
            std::uint64_t allFrames)
        : m_old(old), m_streams(streams), m_firstFormFrames(firstFormFrames), m_allFrames(allFrames) {
        m_out.superAt.resize(streams.size());
        m_out.superBytes.resize(streams.size());
    }

    NewHeaders run() {
        const std::size_t list = beginList(riffCode("hdrl"));
        std::size_t stream = 0;
        for (std::size_t i = 0; i < m_old.root.children.size(); ++i) {
            const HeaderChunk& child = m_old.root.children[i];
            if (stream < m_old.streams.size() && m_old.streams[stream].list == i) {
                addStream(child, stream++);
            } else if (child.type == riffCode("odml")) {
                addExtended(child);
            } else if (child.at == m_old.mainAt - kChunkHeaderSize) {
                addMain(child);
            } else {
                copy(child);
            }
        }
        if (m_old.extendedAt == 0) {
            addFreshExtended();
        }
        endList(list);
        return std::move(m_out);
    }

 private:
    FileBytes& bytes() { return m_out.bytes; }

    std::size_t beginList(std::uint32_t type) {
        const std::size_t at = bytes().size();
        putList(bytes(), riffCode("LIST"), 0, type);
        return at;
    }
    void endList(std::size_t at) {
        set(at + 4, static_cast<std::uint32_t>(bytes().size() - at - kChunkHeaderSize));
    }
    void set(std::size_t at, std::uint32_t value) { std::memcpy(bytes().data() + at, &value, sizeof value); }

    // Gives where its data begins.
    std::size_t copy(const HeaderChunk& chunk) {
        const std::size_t at = bytes().size();
        putHeader(bytes(), chunk.code, chunk.end - chunk.at - kChunkHeaderSize);
        bytes().insert(bytes().end(),
                       m_old.bytes.begin() + static_cast<std::ptrdiff_t>(chunk.at + kChunkHeaderSize),
                       m_old.bytes.begin() + static_cast<std::ptrdiff_t>(chunk.end));
        if ((chunk.end - chunk.at) % 2 != 0) {
            bytes().push_back(chunk.end < m_old.bytes.size() ? m_old.bytes[chunk.end] : std::uint8_t{0});
        }
        return at + kChunkHeaderSize;
    }

    void addMain(const HeaderChunk& chunk) {
        const std::size_t at = copy(chunk);
        std::uint32_t flags = 0;
        std::memcpy(&flags, bytes().data() + at + offsetof(orvantis::AviMainHeader, dwFlags), sizeof flags);
        set(at + offsetof(orvantis::AviMainHeader, dwFlags), flags | kHasIndex);
        set(at + offsetof(orvantis::AviMainHeader, dwTotalFrames), word(m_firstFormFrames));
    }

    void addStream(const HeaderChunk& list, std::size_t number) {
        const std::size_t at = beginList(riffCode("strl"));
        const ClipStream& stream = m_old.streams[number];
        for (const HeaderChunk& chunk : list.children) {
            if (chunk.code == riffCode("indx")) {
                if (m_out.superAt[number] == 0) {
                    addSuper(number, chunk.bytes());
                }
                continue;
            }
            const std::size_t data = copy(chunk);
            if (chunk.data == stream.headerAt) {
                set(data + offsetof(orvantis::AviStreamHeader, dwLength), word(m_streams[number].length));
            }
        }
        if (m_out.superAt[number] == 0) {
            addSuper(number, 0);
        }
        endList(at);
    }

    void addSuper(std::size_t number, std::uint64_t oldBytes) {
        const std::uint64_t needed =
            kIndexHeaderSize + kSuperEntrySize * std::max<std::size_t>(m_streams[number].indexes, 1);
        const std::uint64_t size = std::max(needed, oldBytes + oldBytes % 2);
        putHeader(bytes(), riffCode("indx"), size);
        m_out.superAt[number] = bytes().size();
        m_out.superBytes[number] = size;
        bytes().resize(bytes().size() + static_cast<std::size_t>(size));
    }

    void addExtended(const HeaderChunk& list) {
        const std::size_t at = beginList(riffCode("odml"));
        for (const HeaderChunk& chunk : list.children) {
            const std::size_t data = copy(chunk);
            if (chunk.data == m_old.extendedAt) {
                set(data, word(m_allFrames));
            }
        }
        endList(at);
    }

    void addFreshExtended() {
        const std::size_t at = beginList(riffCode("odml"));
        putHeader(bytes(), riffCode("dmlh"), sizeof(orvantis::AviExtHeader));
        put32(bytes(), word(m_allFrames));
        bytes().resize(bytes().size() + sizeof(orvantis::AviExtHeader) - 4);
        endList(at);
    }

    const ClipHeaders& m_old;
    const std::vector<StreamTotals>& m_streams;
    std::uint64_t m_firstFormFrames;
    std::uint64_t m_allFrames;
    NewHeaders m_out;
};

}  // namespace

NewHeaders rebuildHeaders(const ClipHeaders& old, const std::vector<StreamTotals>& streams,
                          std::uint64_t firstFormFrames, std::uint64_t allFrames) {
    return Rebuild(old, streams, firstFormFrames, allFrames).run();
}

}  // namespace simhost::tool
