#include "tool/rescue/clip_headers.h"

#include <algorithm>
#include <cstring>

#include "avi/four_char_code.h"

namespace simhost::tool {
namespace {

using orvantis::riffCode;

constexpr std::size_t kChunkHeader = 8;
constexpr std::size_t kListHeader = 12;
constexpr int kMostDepth = 8;
constexpr std::size_t kMostHeaderChunks = 65'536;
// How far the list is looked for when the file's first bytes are damaged.
constexpr std::uint64_t kSearched = 64 * 1024;

bool isPrintable(std::uint32_t code) {
    for (int i = 0; i < 4; ++i, code >>= 8) {
        if ((code & 0xFF) < 0x20 || (code & 0xFF) > 0x7E) {
            return false;
        }
    }
    return true;
}

bool holdsLists(std::uint32_t type) {
    return type == riffCode("strl") || type == riffCode("odml") || type == riffCode("hdrl");
}

class HeaderParse {
 public:
    HeaderParse(ByteWindow& file, ClipHeaders& out) : m_file(file), m_out(out) {}

    void run() {
        if (!findList()) {
            m_out.fault = "it does not begin like an AVI file";
            return;
        }
        const bool ends = loadList();
        HeaderChunk& root = m_out.root;
        root.code = riffCode("LIST");
        root.type = riffCode("hdrl");
        root.data = kListHeader;
        root.end = m_out.bytes.size();
        root.sizeIsRight = ends;
        readLevel(root, 0);
        readFields();
        findMovi();
    }

 private:
    std::uint32_t word(std::uint64_t at) {
        const auto bytes = m_file.view(at, 4);
        return bytes.size() < 4 ? 0 : wordOf(bytes.data());
    }

    bool isList(std::uint64_t at, std::uint32_t type) {
        return word(at) == riffCode("LIST") && word(at + 8) == type;
    }

    bool findList() {
        m_out.formIsRight = word(0) == riffCode("RIFF") && word(8) == riffCode("AVI ");
        std::uint64_t at = kListHeader;
        // Chunks may stand before the list.
        for (int i = 0; m_out.formIsRight && i < 16 && isPrintable(word(at)); ++i) {
            if (isList(at, riffCode("hdrl"))) {
                m_out.at = at;
                return true;
            }
            at += kChunkHeader + word(at + 4) + word(at + 4) % 2;
        }
        const auto start = m_file.view(0, kSearched, kSearched);
        constexpr std::uint8_t kType[] = {'h', 'd', 'r', 'l'};
        for (auto found = start.begin(); found != start.end(); ++found) {
            found = std::search(found, start.end(), std::begin(kType), std::end(kType));
            const auto place = static_cast<std::uint64_t>(found - start.begin());
            if (found == start.end()) {
                break;
            }
            if (place >= 8 && std::memcmp(&*found - 8, "LIST", 4) == 0) {
                m_out.at = place - 8;
                return true;
            }
        }
        return false;
    }

    // False when the list's size is not believed, and its end is found by walking.
    bool loadList() {
        const std::uint64_t size = word(m_out.at + 4);
        const std::uint64_t end = m_out.at + kChunkHeader + size;
        const bool right = size >= 4 && size <= ClipHeaders::kMostBytes && end <= m_file.size() &&
                           (end == m_file.size() || isPrintable(word(end + size % 2)));
        load(right ? end : walkedEnd());
        return right;
    }

    // Lists are entered, chunks skipped.
    std::uint64_t walkedEnd() {
        std::uint64_t at = m_out.at + kListHeader;
        const std::uint64_t limit =
            std::min<std::uint64_t>(m_file.size(), m_out.at + ClipHeaders::kMostBytes);
        for (std::size_t i = 0; i < kMostHeaderChunks && at + kChunkHeader <= limit; ++i) {
            const std::uint32_t code = word(at);
            const std::uint32_t size = word(at + 4);
            if (code == riffCode("LIST")) {
                if (!holdsLists(word(at + 8))) {
                    break;
                }
                at += kListHeader;
            } else if (!isPrintable(code) || at + kChunkHeader + size > limit) {
                break;
            } else {
                at += kChunkHeader + size + size % 2;
            }
        }
        return std::min(at, limit);
    }

    void load(std::uint64_t end) {
        m_out.bytes.reserve(static_cast<std::size_t>(end - m_out.at));
        for (std::uint64_t at = m_out.at; at < end;) {
            const auto piece = m_file.view(
                at, static_cast<std::size_t>(std::min<std::uint64_t>(end - at, ByteWindow::kMostBytes)));
            if (piece.empty()) {
                break;
            }
            m_out.bytes.insert(m_out.bytes.end(), piece.begin(), piece.end());
            at += piece.size();
        }
        m_out.bytes.resize(std::max(m_out.bytes.size(), kListHeader));
    }

    void readLevel(HeaderChunk& list, int depth) {
        std::size_t at = list.data;
        while (at + kChunkHeader <= list.end && m_chunksLeft > 0) {
            --m_chunksLeft;
            HeaderChunk chunk;
            chunk.at = at;
            chunk.code = m_out.wordAt(at);
            const std::uint64_t size = m_out.wordAt(at + 4);
            chunk.data = at + kChunkHeader;
            if (!isPrintable(chunk.code)) {
                break;
            }
            chunk.sizeIsRight = size <= list.end - chunk.data;
            chunk.end = chunk.sizeIsRight ? chunk.data + static_cast<std::size_t>(size) : list.end;
            if (chunk.code == riffCode("LIST") && list.end - at >= kListHeader) {
                const std::uint32_t type = m_out.wordAt(at + kChunkHeader);
                if (list.type == riffCode("strl") && type == riffCode("strl")) {
                    list.end = at;  // of a list whose size is not right
                    break;
                }
                chunk.type = type;
                chunk.data = at + kListHeader;
                if (chunk.end < chunk.data) {
                    chunk.sizeIsRight = false;
                    chunk.end = list.end;
                }
                if (holdsLists(type) && depth < kMostDepth) {
                    readLevel(chunk, depth + 1);
                }
            }
            at = chunk.end + (chunk.end - chunk.at) % 2;
            list.children.push_back(std::move(chunk));
        }
    }

    void readFields() {
        for (std::size_t i = 0; i < m_out.root.children.size(); ++i) {
            const HeaderChunk& child = m_out.root.children[i];
            if (child.code == riffCode("avih") && child.bytes() >= sizeof(orvantis::AviMainHeader)) {
                m_out.mainAt = child.data;
            } else if (child.type == riffCode("odml")) {
                for (const HeaderChunk& chunk : child.children) {
                    if (chunk.code == riffCode("dmlh") && chunk.bytes() >= 4) {
                        m_out.extendedAt = chunk.data;
                    }
                }
            } else if (child.type == riffCode("strl")) {
                addStream(child, i);
            }
        }
        if (m_out.mainAt == 0) {
            m_out.fault = "its headers are cut off or damaged: avih is missing";
        } else if (m_out.streams.empty() && m_out.fault.empty()) {
            m_out.fault = "its headers are cut off or damaged: they describe no stream";
        }
    }

    void addStream(const HeaderChunk& list, std::size_t number) {
        ClipStream stream;
        stream.list = number;
        bool described = false;
        const HeaderChunk* junk = nullptr;
        for (const HeaderChunk& chunk : list.children) {
            if (chunk.code == riffCode("strh") && chunk.bytes() >= sizeof(stream.header) &&
                stream.headerAt == 0) {
                std::memcpy(&stream.header, m_out.bytes.data() + chunk.data, sizeof(stream.header));
                stream.headerAt = chunk.data;
            } else if (chunk.code == riffCode("strf") && chunk.sizeIsRight && !described) {
                described = true;
                stream.format.assign(m_out.bytes.begin() + static_cast<std::ptrdiff_t>(chunk.data),
                                     m_out.bytes.begin() + static_cast<std::ptrdiff_t>(chunk.end));
            } else if (chunk.code == riffCode("indx") && chunk.sizeIsRight && stream.indexBytes == 0) {
                stream.indexAt = chunk.data;
                stream.indexBytes = chunk.bytes();
            } else if (chunk.code == riffCode("JUNK") && chunk.sizeIsRight) {
                junk = &chunk;
            }
        }
        if (stream.headerAt == 0 || !described) {
            m_out.fault = "its headers are cut off or damaged: stream " +
                          std::to_string(m_out.streams.size()) + " is not described whole";
        }
        if (stream.indexBytes == 0 && junk != nullptr) {
            stream.indexAt = junk->data;
            stream.indexBytes = junk->bytes();
        }
        stream.kind = stream.header.fccType == orvantis::kStreamTypeVideo   ? ClipStream::Kind::kVideo
                      : stream.header.fccType == orvantis::kStreamTypeAudio ? ClipStream::Kind::kAudio
                                                                            : ClipStream::Kind::kOther;
        m_out.streams.push_back(std::move(stream));
    }

    // "01wb": where the list itself is damaged, another may follow.
    static bool isData(std::uint32_t code) {
        const auto digit = [code](int i) { return (code >> (8 * i) & 0xFF) - '0' < 10; };
        return digit(0) && digit(1) && code >> 16 != ('i' | 'x' << 8);
    }

    void findMovi() {
        std::uint64_t at = m_out.end() + m_out.bytes.size() % 2;
        for (std::size_t i = 0; i < kMostHeaderChunks && at + kListHeader <= m_file.size(); ++i) {
            if (isList(at, riffCode("movi"))) {
                m_out.moviAt = at;
                return;
            }
            const std::uint32_t size = word(at + 4);
            if (!isPrintable(word(at)) || word(at) == riffCode("RIFF") || isData(word(at))) {
                return;
            }
            at += kChunkHeader + std::uint64_t{size} + size % 2;
        }
    }

    ByteWindow& m_file;
    ClipHeaders& m_out;
    std::size_t m_chunksLeft = kMostHeaderChunks;
};

std::uint32_t formatWord(const std::vector<std::uint8_t>& format, std::size_t at, std::size_t bytes) {
    std::uint32_t out = 0;
    for (std::size_t i = 0; i < bytes && at + i < format.size(); ++i) {
        out |= std::uint32_t{format[at + i]} << (8 * i);
    }
    return out;
}

// wFormatTag, with that of WAVEFORMATEXTENSIBLE's subformat in its place.
std::uint32_t soundTag(const std::vector<std::uint8_t>& format) {
    constexpr std::uint32_t kExtensible = 0xFFFE;
    const std::uint32_t tag = formatWord(format, 0, 2);
    return tag == kExtensible ? formatWord(format, 24, 2) : tag;
}

constexpr std::uint32_t kPcmTag = 1;
constexpr std::uint32_t kFloatTag = 3;

}  // namespace

std::uint32_t wordOf(const std::uint8_t* bytes) noexcept {
    std::uint32_t out = 0;
    std::memcpy(&out, bytes, sizeof out);
    return out;
}

std::string codeName(std::uint32_t code) {
    std::string out;
    for (int i = 0; i < 4; ++i, code >>= 8) {
        const char c = static_cast<char>(code & 0xFF);
        out += c >= 0x20 && c < 0x7F ? c : '?';
    }
    return out;
}

std::uint32_t ClipHeaders::wordAt(std::size_t place) const noexcept {
    return place + 4 <= bytes.size() ? wordOf(bytes.data() + place) : 0;
}

std::string ClipStream::formatName() const {
    if (kind == Kind::kVideo) {
        return codeName(formatWord(format, 16, 4));
    }
    if (kind != Kind::kAudio) {
        return codeName(header.fccType);
    }
    const std::uint32_t tag = soundTag(format);
    return tag == kPcmTag ? "PCM" : tag == kFloatTag ? "float" : "sound format " + std::to_string(tag);
}

std::uint32_t ClipStream::frameBytes() const noexcept {
    const std::uint32_t tag = kind == Kind::kAudio ? soundTag(format) : 0;
    return tag == kPcmTag || tag == kFloatTag ? formatWord(format, 12, 2) : 0;
}

std::uint64_t ClipStream::lengthOf(std::uint64_t chunks, std::uint64_t bytes) const noexcept {
    if (kind != Kind::kAudio) {
        return chunks;
    }
    const std::uint32_t unit = frameBytes() != 0 ? frameBytes() : header.dwSampleSize;
    return unit == 0 ? chunks : bytes / unit;
}

double ClipStream::seconds(std::uint64_t length) const noexcept {
    if (kind == Kind::kAudio && frameBytes() != 0) {
        const std::uint32_t rate = formatWord(format, 4, 4);
        return rate == 0 ? 0.0 : static_cast<double>(length) / rate;
    }
    return header.dwRate == 0 ? 0.0 : static_cast<double>(length) * header.dwScale / header.dwRate;
}

std::uint64_t ClipStream::mostChunkBytes() const noexcept {
    constexpr std::uint64_t kLeast = 64 * 1024;
    constexpr std::uint64_t kSeconds = 60;
    constexpr std::uint64_t kPixelBytes = 16;  // four channels of 16 bits, twice
    std::uint64_t most = std::max<std::uint64_t>(kLeast, std::uint64_t{2} * header.dwSuggestedBufferSize);
    if (kind == Kind::kVideo) {
        const auto width = static_cast<std::int32_t>(formatWord(format, 4, 4));
        const auto height = static_cast<std::int32_t>(formatWord(format, 8, 4));
        const auto size = [](std::int32_t n) {
            return static_cast<std::uint64_t>(n < 0 ? -std::int64_t{n} : n);
        };
        most = std::max(most, kLeast + kPixelBytes * std::min<std::uint64_t>(size(width), 65'536) *
                                           std::min<std::uint64_t>(size(height), 65'536));
    } else if (kind == Kind::kAudio) {
        most = std::max(most, kSeconds * formatWord(format, 8, 4));
    }
    return most;
}

ClipHeaders readClipHeaders(ByteWindow& file) {
    ClipHeaders out;
    HeaderParse(file, out).run();
    return out;
}

}  // namespace simhost::tool
