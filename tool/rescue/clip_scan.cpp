#include "tool/rescue/clip_scan.h"

#include <algorithm>
#include <array>

#include "avi/four_char_code.h"
#include "tool/shared/base/tool_error.h"

namespace simhost::tool {
namespace {

using orvantis::riffCode;

constexpr std::uint64_t kChunkBytes = 8;              // of a header
constexpr std::uint64_t kListBytes = 12;              // with the type
constexpr std::uint32_t kMostChunkSize = 0x7FFFFFFF;  // OpenDML's indexes have 31 bits for it
constexpr std::size_t kMostForms = 65'536;
constexpr std::size_t kProvingZeros = 512;
constexpr std::size_t kLostEnd = 16;  // zeros that are not taken for data when only zeros follow

bool isDigit(std::uint32_t c) {
    return c >= '0' && c <= '9';
}
bool isLetter(std::uint32_t c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
std::uint32_t letter(std::uint32_t code, int i) {
    return code >> (8 * i) & 0xFF;
}

enum class Token {
    kEnd,   // too few bytes for a header
    kForm,  // RIFF
    kMovi,
    kRec,
    kList,    // any other list
    kOwn,     // the container's: indexes, padding
    kStream,  // data of a stream
    kOther,   // letters that could be a chunk's code
    kBad,
};

struct Head {
    Token token = Token::kEnd;
    std::uint32_t code = 0;
    std::uint32_t size = 0;
    unsigned stream = 0;
    bool usual = false;  // of kStream: the code is the usual one for that kind of stream
};

bool isOwn(std::uint32_t code) {
    constexpr std::array kCodes = {riffCode("JUNK"), riffCode("idx1"), riffCode("indx"), riffCode("PAD ")};
    if (std::find(kCodes.begin(), kCodes.end(), code) != kCodes.end()) {
        return true;
    }
    const bool first = letter(code, 0) == 'i' && letter(code, 1) == 'x' && isDigit(letter(code, 2)) &&
                       isDigit(letter(code, 3));
    const bool last = letter(code, 2) == 'i' && letter(code, 3) == 'x' && isDigit(letter(code, 0)) &&
                      isDigit(letter(code, 1));
    return first || last;
}

class Scanner {
 public:
    Scanner(Storage& file, const ScanStep& step) : m_file(file), m_walk(file), m_peek(file), m_step(step) {}

    ClipScan run() {
        m_out.fileSize = m_walk.size();
        if (m_out.fileSize > FoundChunk::kMostOffset) {
            throw ToolError(kFailed, "the file is larger than any recording");
        }
        m_out.headers = readClipHeaders(m_walk);
        if (!m_out.headers.fault.empty()) {
            return std::move(m_out);
        }
        for (const ClipStream& stream : m_out.headers.streams) {
            m_most.push_back(stream.mostChunkBytes());
        }
        FoundForm form;
        form.at = m_out.headers.at >= kListBytes ? m_out.headers.at - kListBytes : 0;
        form.formSize = wordAt(form.at + 4);
        if (m_out.headers.formIsRight) {
            form.at = 0;
            form.formSize = wordAt(4);
        }
        m_out.forms.push_back(form);
        walk(m_out.headers.moviAt != 0 ? m_out.headers.moviAt
                                       : m_out.headers.end() + m_out.headers.bytes.size() % 2);
        return std::move(m_out);
    }

 private:
    std::uint32_t wordAt(std::uint64_t at) {
        const auto bytes = m_walk.view(at, 4);
        return bytes.size() < 4 ? 0 : wordOf(bytes.data());
    }

    Head headAt(ByteWindow& window, std::uint64_t at, std::size_t ahead = 4096) {
        Head out;
        const auto bytes = window.view(at, kListBytes, ahead);
        if (bytes.size() < kChunkBytes) {
            return out;
        }
        out.code = wordOf(bytes.data());
        out.size = wordOf(bytes.data() + 4);
        const bool isListHead = out.code == riffCode("RIFF") || out.code == riffCode("LIST");
        if (isListHead && bytes.size() < kListBytes) {
            out.token = Token::kList;  // its type is cut off
            return out;
        }
        out.token = tokenOf(out, isListHead ? wordOf(bytes.data() + 8) : 0);
        return out;
    }

    Token tokenOf(Head& head, std::uint32_t type) const {
        const std::uint32_t code = head.code;
        if (code == riffCode("RIFF")) {
            return type == riffCode("AVI ") || type == riffCode("AVIX") ? Token::kForm : Token::kBad;
        }
        if (code == riffCode("LIST")) {
            return type == riffCode("movi")   ? Token::kMovi
                   : type == riffCode("rec ") ? Token::kRec
                   : isPrintableCode(type)    ? Token::kList
                                              : Token::kBad;
        }
        if (isOwn(code)) {
            return Token::kOwn;
        }
        if (isDigit(letter(code, 0)) && isDigit(letter(code, 1))) {
            head.stream = (letter(code, 0) - '0') * 10 + letter(code, 1) - '0';
            const bool named = isLetter(letter(code, 2)) && isLetter(letter(code, 3));
            if (head.stream < m_out.headers.streams.size() && head.size <= kMostChunkSize && named) {
                head.usual = isUsual(head.stream, code >> 16);
                return head.usual || !isUsualElsewhere(code >> 16) ? Token::kStream : Token::kBad;
            }
            return Token::kBad;
        }
        return isPrintableCode(code) ? Token::kOther : Token::kBad;
    }

    static bool isPrintableCode(std::uint32_t code) {
        for (int i = 0; i < 4; ++i) {
            if (letter(code, i) < 0x20 || letter(code, i) > 0x7E) {
                return false;
            }
        }
        return true;
    }

    static constexpr std::uint32_t kDc = 'd' | 'c' << 8;
    static constexpr std::uint32_t kDb = 'd' | 'b' << 8;
    static constexpr std::uint32_t kPc = 'p' | 'c' << 8;
    static constexpr std::uint32_t kWb = 'w' | 'b' << 8;

    static bool isUsualElsewhere(std::uint32_t letters) {
        return letters == kDc || letters == kDb || letters == kPc || letters == kWb;
    }

    bool isUsual(unsigned stream, std::uint32_t letters) const {
        switch (m_out.headers.streams[stream].kind) {
            case ClipStream::Kind::kVideo:
                return letters == kDc || letters == kDb || letters == kPc;
            case ClipStream::Kind::kAudio:
                return letters == kWb;
            case ClipStream::Kind::kOther:
                break;
        }
        return true;
    }

    bool isPlausible(const Head& head) const { return head.size <= m_most[head.stream]; }
    static std::uint64_t endOf(std::uint64_t at, const Head& head) { return at + kChunkBytes + head.size; }
    static std::uint64_t paddedEndOf(std::uint64_t at, const Head& head) {
        return endOf(at, head) + head.size % 2;
    }

    // Behind chunks that damage has moved to odd places one byte may lead back to an even one, where readers
    // look for an index. `at`, or the place behind that byte.
    std::uint64_t passFiller(ByteWindow& window, std::uint64_t at, std::size_t ahead = 4096) {
        if ((at - m_out.forms.back().at) % 2 == 0) {
            return at;
        }
        const auto byte = window.view(at, 1, ahead);
        const bool filler =
            !byte.empty() && byte[0] == 0 && headAt(window, at + 1, ahead).token == Token::kOwn;
        return filler ? at + 1 : at;
    }

    // ---- from chunk to chunk ----

    void walk(std::uint64_t start) {
        m_at = start;
        for (std::uint64_t count = 0; m_at + kChunkBytes <= m_out.fileSize; ++count) {
            if (count % 64 == 0) {
                tellStep(m_at);
            }
            noteListEnd();
            m_at = passFiller(m_walk, m_at, m_ahead);
            takeToken(headAt(m_walk, m_at, m_ahead));
        }
        noteListEnd();
        if (m_at < m_out.fileSize) {
            m_out.addDamage({{m_at, m_out.fileSize}, Stretch::Kind::kNoChunks, 0, 0});
        }
        tellStep(m_out.fileSize);
    }

    void tellStep(std::uint64_t at) const {
        if (m_step) {
            m_step(std::min(at, m_out.fileSize));
        }
    }

    // Of its data, and with the byte that makes it even: the two differ where damage has moved chunks to odd
    // places.
    std::uint64_t moviDataEnd() const {
        const FoundForm& form = m_out.forms.back();
        return form.moviAt == 0 ? 0 : form.moviAt + kChunkBytes + form.moviSize;
    }
    std::uint64_t moviEnd() const {
        const FoundForm& form = m_out.forms.back();
        return form.moviAt == 0 ? 0 : moviDataEnd() + form.moviSize % 2;
    }
    std::uint64_t formEnd() const {
        const FoundForm& form = m_out.forms.back();
        return form.at + kChunkBytes + form.formSize + form.formSize % 2;
    }

    void noteListEnd() {
        FoundForm& form = m_out.forms.back();
        if (form.moviAt != 0 && form.moviSize != 0 &&
            (m_at == moviEnd() || (m_at >= m_out.fileSize && moviEnd() == m_out.fileSize))) {
            form.moviSizeIsRight = true;
        }
    }

    void takeToken(const Head& head) {
        switch (head.token) {
            case Token::kForm:
                addForm(head);
                m_at += kListBytes;
                break;
            case Token::kMovi: {
                FoundForm& form = m_out.forms.back();
                if (form.moviAt == 0) {
                    form.moviAt = m_at;
                    form.moviSize = head.size;
                    form.dataEnd = m_at + kListBytes;
                }
                m_at += kListBytes;
                break;
            }
            case Token::kRec:
                m_out.forms.back().recAt = m_at;
                m_at += kListBytes;
                m_out.forms.back().dataEnd = m_at;
                break;
            case Token::kStream:
                takeChunk(head);
                break;
            case Token::kList:
                if (begins(m_at + kListBytes)) {
                    m_at += kListBytes;  // data, whatever the list says
                    break;
                }
                [[fallthrough]];
            case Token::kOwn:
                if (endOf(m_at, head) > m_out.fileSize) {
                    resync({{m_at, 0}, Stretch::Kind::kCutOther, 0, head.code}, m_at + kChunkBytes);
                } else {
                    if (head.code == riffCode("idx1")) {
                        m_out.forms.back().indexAt = m_at;
                    }
                    m_at = paddedEndOf(m_at, head);
                }
                break;
            case Token::kOther:
                if (follows(m_at) && !begins(m_at + kChunkBytes) && !begins(m_at + kListBytes)) {
                    passStrange(head);
                    break;
                }
                [[fallthrough]];
            case Token::kEnd:
            case Token::kBad:
                resync({{m_at, 0}, Stretch::Kind::kNoChunks, 0, 0}, m_at + 1);
                break;
        }
    }

    void passStrange(const Head& head) {
        const std::uint64_t end = std::min(paddedEndOf(m_at, head), m_out.fileSize);
        const FoundForm& form = m_out.forms.back();
        if (form.moviAt != 0 && form.indexAt == 0 && (form.moviSize == 0 || m_at < moviEnd())) {
            m_out.addDamage({{m_at, end}, Stretch::Kind::kStrangeChunk, 0, head.code});
        }
        m_at = end;
    }

    void addForm(const Head& head) {
        if (m_out.forms.size() >= kMostForms) {
            throw ToolError(kFailed, "the file holds more RIFF forms than any recording");
        }
        FoundForm form;
        form.at = m_at;
        form.formSize = head.size;
        form.dataEnd = m_at + kListBytes;
        m_out.forms.push_back(form);
    }

    void takeChunk(const Head& head) {
        const std::uint64_t end = endOf(m_at, head);
        if (end > m_out.fileSize) {
            // Most likely the file was cut, and then all the rest is the chunk's own data, whatever that
            // looks like.
            m_inCut = isPlausible(head);
            resync({{m_at, 0}, Stretch::Kind::kDamagedChunk, head.stream, head.code}, m_at + kChunkBytes);
            m_inCut = false;
            return;
        }
        const std::optional<std::uint64_t> next = nextAfter(head);
        if (!next) {
            resync({{m_at, 0}, Stretch::Kind::kDamagedChunk, head.stream, head.code}, m_at + kChunkBytes);
            return;
        }
        if (m_out.chunks.size() == FoundChunks::kMost) {
            throw ToolError(kFailed, "the file holds more chunks than any recording: " +
                                         std::to_string(FoundChunks::kMost));
        }
        m_out.chunks.add({m_at + kChunkBytes, head.size, head.code, head.stream});
        m_most[head.stream] = std::max(m_most[head.stream], std::uint64_t{4} * head.size);
        m_at = *next;
        m_out.forms.back().dataEnd = std::min(m_at, m_out.fileSize);
    }

    // Where the walk goes on behind a chunk of a stream that is whole; nothing for one that is not.
    std::optional<std::uint64_t> nextAfter(const Head& head) {
        const std::uint64_t end = endOf(m_at, head);
        const std::uint64_t next = paddedEndOf(m_at, head);
        // Small chunks are read together, large ones jumped over.
        constexpr std::uint32_t kFar = 64 * 1024;
        m_ahead = head.size > kFar ? 4096 : 4 * kFar;
        if (follows(next) || next == moviEnd() || next == formEnd()) {
            return next;
        }
        if (next == moviDataEnd()) {
            return moviEnd();
        }
        if (next != end && follows(end)) {
            return end;  // some programs do not pad
        }
        return zerosEnd(end) == m_out.fileSize && !endsWithZeros(end, head) ? std::optional(next)
                                                                            : std::nullopt;
    }

    // Where zeros that begin at `at` end. A long run is asked about several times.
    std::uint64_t zerosEnd(std::uint64_t at) {
        if (at < m_zeros.begin || at > m_zeros.end) {
            m_zeros = {at, m_walk.skipZeros(at, [this](std::uint64_t place) { tellStep(place); })};
        }
        return m_zeros.end;
    }

    // A recorder that died may not have come to the end of a chunk whose header it had written.
    bool endsWithZeros(std::uint64_t end, const Head& head) {
        const std::size_t count = std::min<std::size_t>(head.size, kLostEnd);
        const auto bytes = m_walk.view(end - count, count);
        return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte == 0; });
    }

    // Whether what stands at `at` can stand behind a chunk.
    bool follows(std::uint64_t at) {
        at = passFiller(m_walk, at, m_ahead);
        const Head head = headAt(m_walk, at, m_ahead);
        if (head.token != Token::kOther) {
            return head.token != Token::kBad;
        }
        if (endOf(at, head) > m_out.fileSize) {
            return false;
        }
        const std::uint64_t next = passFiller(m_walk, paddedEndOf(at, head), m_ahead);
        const Token then = headAt(m_walk, next, m_ahead).token;
        return then != Token::kOther && then != Token::kBad;
    }

    // ---- from byte to byte ----

    // Ends `stretch` where chunks follow one another again; the search for that begins at `from`.
    void resync(Stretch stretch, std::uint64_t from) {
        if (stretch.kind == Stretch::Kind::kNoChunks) {
            const std::uint64_t data = zerosEnd(m_at);
            if (data == m_out.fileSize) {
                stretch.kind = Stretch::Kind::kZeros;
            }
            from = std::max(from, data);
        }
        m_inIndex = stretch.kind == Stretch::Kind::kCutOther;
        stretch.place.end = search(from);
        const bool toEnd = stretch.place.end == m_out.fileSize;
        if (toEnd && stretch.kind == Stretch::Kind::kDamagedChunk) {
            const Head head = headAt(m_walk, m_at);
            const std::uint64_t end = endOf(m_at, head);
            if (end > m_out.fileSize) {
                stretch.kind = Stretch::Kind::kCutChunk;
            } else if (zerosEnd(end) == m_out.fileSize) {
                stretch.place.end = std::min(paddedEndOf(m_at, head), m_out.fileSize);
            }
        }
        m_at = stretch.place.end;
        m_out.addDamage(stretch);
    }

    std::uint64_t search(std::uint64_t at) {
        constexpr std::size_t kOverlap = 3;
        for (std::size_t piece = ByteWindow::kFirstPiece; at < m_out.fileSize;) {
            const std::uint64_t data = m_file.dataFrom(at).begin;
            if (data > at) {
                at = data;
                continue;
            }
            // The walk's window is not at its place while there is damage.
            const auto bytes = m_walk.view(at, piece, piece);
            for (std::size_t i = 0; i + kOverlap < bytes.size(); ++i) {
                if (mayBegin(bytes.data() + i) && begins(at + i) && (!m_inCut || leadsToTheEnd(at + i))) {
                    return at + i;
                }
            }
            tellStep(at);
            if (bytes.size() < piece) {
                break;
            }
            at += bytes.size() - kOverlap;
            piece = ByteWindow::nextPiece(piece);
        }
        return m_out.fileSize;
    }

    static bool mayBegin(const std::uint8_t* bytes) {
        switch (bytes[0]) {
            case 'R':
                return bytes[1] == 'I' && bytes[2] == 'F' && bytes[3] == 'F';
            case 'L':
                return bytes[1] == 'I' && bytes[2] == 'S' && bytes[3] == 'T';
            case 'i':
            case 'J':
                return isOwn(wordOf(bytes));
            default:
                return isDigit(bytes[0]) && isDigit(bytes[1]) && isLetter(bytes[2]) && isLetter(bytes[3]);
        }
    }

    // Four letters alone are found by chance; several headers that lead from one to the next are not.
    bool begins(std::uint64_t at) {
        Head head = headAt(m_peek, at);
        if (head.token == Token::kForm || head.token == Token::kMovi || head.token == Token::kRec) {
            return true;
        }
        if (head.token == Token::kOwn) {
            if (endOf(at, head) > m_out.fileSize) {
                return false;
            }
            const Token then = headAt(m_peek, passFiller(m_peek, paddedEndOf(at, head))).token;
            return then != Token::kOther && then != Token::kBad;
        }
        constexpr int kLinks = 2;
        for (int i = 0; i < kLinks; ++i) {
            const std::uint64_t end = endOf(at, head);
            if (head.token != Token::kStream || !head.usual || !isPlausible(head)) {
                return false;
            }
            if (end > m_out.fileSize) {
                return i > 0;  // the file's last chunk, cut off
            }
            std::uint64_t next = paddedEndOf(at, head);
            if (next == moviDataEnd() || next == moviEnd()) {
                return true;
            }
            next = passFiller(m_peek, next);
            const Head then = headAt(m_peek, next);
            if (then.token == Token::kEnd) {
                return i > 0 || !m_inIndex;
            }
            if (then.token == Token::kForm || then.token == Token::kMovi || then.token == Token::kRec ||
                then.token == Token::kOwn) {
                return true;
            }
            if (then.code == 0 && head.size > 0) {
                const auto zeros = m_peek.view(next, kProvingZeros);
                return std::all_of(zeros.begin(), zeros.end(), [](std::uint8_t byte) { return byte == 0; });
            }
            at = next;
            head = then;
        }
        return head.token == Token::kStream && head.usual && isPlausible(head);
    }

    // Whether the chunks from `at` on go on to the end of the file, or for long: data that only looks like
    // some chunks does not.
    bool leadsToTheEnd(std::uint64_t at) {
        constexpr int kLong = 32;
        constexpr int kFew = 3;
        int whole = 0;
        for (int i = 0; i < kLong; ++i) {
            at = passFiller(m_peek, at);
            const Head head = headAt(m_peek, at);
            if (head.token == Token::kBad || head.token == Token::kOther) {
                return false;
            }
            if (head.token == Token::kEnd ||
                (head.token == Token::kStream && endOf(at, head) > m_out.fileSize)) {
                return whole >= kFew;
            }
            if (head.code == riffCode("idx1")) {
                const Token entry = headAt(m_peek, at + kChunkBytes).token;
                return whole > 0 && entry == Token::kStream && endOf(at, head) <= m_out.fileSize;
            }
            const bool entered =
                head.token == Token::kForm || head.token == Token::kMovi || head.token == Token::kRec;
            whole += head.token == Token::kStream ? 1 : 0;
            at = entered ? at + kListBytes : paddedEndOf(at, head);
        }
        return true;
    }

    Storage& m_file;
    ByteWindow m_walk;
    ByteWindow m_peek;
    const ScanStep& m_step;
    ClipScan m_out;
    std::vector<std::uint64_t> m_most;  // bytes of a chunk of each stream
    std::uint64_t m_at = 0;
    std::size_t m_ahead = 4096;
    Extent m_zeros;          // looked at last
    bool m_inCut = false;    // what is searched is most likely one chunk's data
    bool m_inIndex = false;  // what is searched is full of chunks' codes
};

}  // namespace

void ClipScan::addDamage(const Stretch& stretch) {
    ++damagedCount;
    damagedBytes += stretch.place.bytes();
    if (damaged.size() == kMostStretches) {
        if (stretch.place.end != fileSize) {
            return;
        }
        damaged.pop_back();  // what is known of the file's end is kept
    }
    const auto place =
        std::upper_bound(damaged.begin(), damaged.end(), stretch,
                         [](const Stretch& a, const Stretch& b) { return a.place.begin < b.place.begin; });
    damaged.insert(place, stretch);
}

ClipScan scanClip(Storage& file, const ScanStep& step) {
    return Scanner(file, step).run();
}

}  // namespace simhost::tool
