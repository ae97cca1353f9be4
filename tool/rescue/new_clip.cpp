#include "tool/rescue/new_clip.h"

#include <algorithm>
#include <optional>

#include "avi/four_char_code.h"
#include "tool/rescue/byte_window.h"
#include "tool/shared/base/tool_error.h"

namespace simhost::tool {
namespace {

using orvantis::riffCode;

std::uint64_t paddedSize(const FoundChunk& chunk) {
    return kChunkHeaderSize + chunk.size() + chunk.size() % 2;
}

// The first video stream, whose frames the headers count.
std::optional<std::size_t> pictureStream(const ClipHeaders& headers) {
    for (std::size_t i = 0; i < headers.streams.size(); ++i) {
        if (headers.streams[i].kind == ClipStream::Kind::kVideo) {
            return i;
        }
    }
    return std::nullopt;
}

struct Counted {
    std::uint64_t chunks = 0;
    std::uint64_t bytes = 0;
    std::uint32_t code = 0;
};

class LayOut {
 public:
    LayOut(const ClipScan& scan, std::uint64_t formBytes) : m_scan(scan), m_formBytes(formBytes) {}

    NewClipLayout run() {
        split();
        const NewHeaders headers = makeHeaders();
        m_out.headers = headers.bytes;
        place();
        fillIn(headers);
        return std::move(m_out);
    }

 private:
    const std::vector<ClipStream>& streams() const { return m_scan.headers.streams; }

    void split() {
        m_out.forms.emplace_back();
        m_counts.emplace_back(streams().size());
        std::uint64_t bytes = 0;
        for (std::size_t i = 0; i < m_scan.chunks.size(); ++i) {
            const FoundChunk& chunk = m_scan.chunks[i];
            NewClipLayout::Form* form = &m_out.forms.back();
            if (bytes > 0 && bytes + paddedSize(chunk) > m_formBytes) {
                m_out.forms.emplace_back().first = i;
                m_counts.emplace_back(streams().size());
                form = &m_out.forms.back();
                bytes = 0;
            }
            bytes += paddedSize(chunk);
            form->last = i + 1;
            if (!chunk.isPalette()) {
                Counted& count = m_counts.back()[chunk.stream()];
                ++count.chunks;
                count.bytes += chunk.size();
                count.code = count.code == 0 ? chunk.code() : count.code;
            }
        }
    }

    NewHeaders makeHeaders() const {
        std::vector<StreamTotals> totals(streams().size());
        for (std::size_t s = 0; s < streams().size(); ++s) {
            Counted all;
            for (const auto& form : m_counts) {
                all.chunks += form[s].chunks;
                all.bytes += form[s].bytes;
                totals[s].indexes += form[s].chunks > 0 ? 1U : 0U;
            }
            totals[s].length = streams()[s].lengthOf(all.chunks, all.bytes);
        }
        const auto pictures = pictureStream(m_scan.headers);
        return rebuildHeaders(m_scan.headers, totals, pictures ? m_counts.front()[*pictures].chunks : 0,
                              pictures ? totals[*pictures].length : 0);
    }

    void place() {
        const ClipHeaders& old = m_scan.headers;
        const std::uint64_t afterOld = old.end() + old.bytes.size() % 2;
        const bool kept = old.moviAt > afterOld && old.moviAt - afterOld <= NewClipLayout::kMostBetween;
        m_out.between = kept ? Extent{afterOld, old.moviAt} : Extent{};
        std::uint64_t at = 0;
        for (std::size_t f = 0; f < m_out.forms.size(); ++f) {
            NewClipLayout::Form& form = m_out.forms[f];
            form.at = at;
            form.moviAt = at + kListHeaderSize + (f == 0 ? m_out.headers.size() + m_out.between.bytes() : 0);
            at = form.moviAt + kListHeaderSize;
            for (std::size_t i = form.first; i < form.last; ++i) {
                at += paddedSize(m_scan.chunks[i]);
            }
            for (std::size_t s = 0; s < streams().size(); ++s) {
                const Counted& count = m_counts[f][s];
                if (count.chunks == 0) {
                    continue;
                }
                const StandardIndexPlan plan{static_cast<unsigned>(s),
                                             count.code,
                                             form.moviAt,
                                             at,
                                             form.first,
                                             form.last,
                                             static_cast<std::uint32_t>(count.chunks),
                                             streams()[s].lengthOf(count.chunks, count.bytes)};
                form.indexes.push_back(plan);
                at += plan.size();
            }
            form.moviEnd = at;
            at += f == 0 ? kChunkHeaderSize + kOldEntrySize * (form.last - form.first) : 0;
            form.end = at;
        }
        m_out.size = at;
    }

    void fillIn(const NewHeaders& headers) {
        for (std::size_t s = 0; s < streams().size(); ++s) {
            std::vector<StandardIndexPlan> indexes;
            for (const NewClipLayout::Form& form : m_out.forms) {
                std::copy_if(form.indexes.begin(), form.indexes.end(), std::back_inserter(indexes),
                             [s](const StandardIndexPlan& plan) { return plan.stream == s; });
            }
            const FileBytes data = superIndex(indexes, headers.superBytes[s]);
            std::copy(data.begin(), data.end(),
                      m_out.headers.begin() + static_cast<std::ptrdiff_t>(headers.superAt[s]));
        }
    }

    const ClipScan& m_scan;
    std::uint64_t m_formBytes;
    std::vector<std::vector<Counted>> m_counts;  // of each form and stream
    NewClipLayout m_out;
};

// Collects what is written, so that the disk gets it in large pieces; long zeros become holes.
class Sink {
 public:
    Sink(Storage& target, const WriteStep& step) : m_target(target), m_step(step) {}

    std::uint64_t at() const noexcept { return m_at + m_bytes.size(); }
    FileBytes& bytes() noexcept { return m_bytes; }
    void flushIfFull() {
        if (m_bytes.size() >= kPiece) {
            flush();
        }
    }
    void flush() {
        m_target.write(m_at, m_bytes);
        m_at += m_bytes.size();
        m_bytes.clear();
        tell();
    }
    void skip(std::uint64_t count) {
        if (count < kLeastHole) {
            m_bytes.resize(m_bytes.size() + static_cast<std::size_t>(count));
            return;
        }
        flush();
        m_at += count;
        tell();
    }

 private:
    static constexpr std::size_t kPiece = std::size_t{4} << 20;
    static constexpr std::uint64_t kLeastHole = 64 * 1024;

    void tell() const {
        if (m_step) {
            m_step(m_at);
        }
    }

    Storage& m_target;
    const WriteStep& m_step;
    std::uint64_t m_at = 0;
    FileBytes m_bytes;
};

class Writer {
 public:
    Writer(Storage& source, const ClipScan& scan, const NewClipLayout& layout, Storage& target,
           const WriteStep& step)
        : m_source(source),
          m_input(source),
          m_scan(scan),
          m_layout(layout),
          m_target(target),
          m_sink(target, step) {}

    void run() {
        if (dataFrom(0) != Extent{0, m_input.size()}) {
            m_target.allowHoles();
        }
        for (std::size_t f = 0; f < m_layout.forms.size(); ++f) {
            writeForm(m_layout.forms[f], f == 0);
        }
        m_sink.flush();
        m_target.resize(m_layout.size);
        if (!m_unreadable.empty()) {
            throw UnreadableChunks(std::move(m_unreadable), m_reason);
        }
    }

 private:
    void writeForm(const NewClipLayout::Form& form, bool first) {
        putList(m_sink.bytes(), riffCode("RIFF"), form.end - form.at - kChunkHeaderSize,
                riffCode(first ? "AVI " : "AVIX"));
        if (first) {
            m_sink.bytes().insert(m_sink.bytes().end(), m_layout.headers.begin(), m_layout.headers.end());
            copy(m_layout.between);
        }
        putList(m_sink.bytes(), riffCode("LIST"), form.moviEnd - form.moviAt - kChunkHeaderSize,
                riffCode("movi"));
        for (std::size_t i = form.first; i < form.last; ++i) {
            writeChunk(i);
        }
        for (const StandardIndexPlan& plan : form.indexes) {
            putStandardIndexStart(m_sink.bytes(), plan);
            eachChunk(form, [&](std::uint64_t at, const FoundChunk& chunk) {
                if (chunk.stream() == plan.stream && !chunk.isPalette()) {
                    putStandardEntry(m_sink.bytes(), plan.base, at + kChunkHeaderSize, chunk);
                    m_sink.flushIfFull();
                }
            });
        }
        if (first) {
            putHeader(m_sink.bytes(), riffCode("idx1"), kOldEntrySize * (form.last - form.first));
            eachChunk(form, [&](std::uint64_t at, const FoundChunk& chunk) {
                putOldEntry(m_sink.bytes(), at - form.moviAt - kChunkHeaderSize, chunk);
                m_sink.flushIfFull();
            });
        }
    }

    // `use` gets the place of each chunk's header in the new file.
    template <class Use>
    void eachChunk(const NewClipLayout::Form& form, Use&& use) {
        std::uint64_t at = form.moviAt + kListHeaderSize;
        for (std::size_t i = form.first; i < form.last; ++i) {
            use(at, m_scan.chunks[i]);
            at += paddedSize(m_scan.chunks[i]);
        }
    }

    void writeChunk(std::size_t number) {
        const FoundChunk& chunk = m_scan.chunks[number];
        putHeader(m_sink.bytes(), chunk.code(), chunk.size());
        const std::uint64_t end = m_sink.at() + chunk.size();
        try {
            copy({chunk.offset(), chunk.end()});
        } catch (const ToolError& error) {
            if (error.code() != kFailed) {
                throw;
            }
            // Others may follow: one look at a bad disk is slow enough.
            m_reason = m_unreadable.empty() ? error.what() : m_reason;
            m_unreadable.push_back(number);
            m_sink.skip(end - m_sink.at());
        }
        if (chunk.size() % 2 != 0) {
            m_sink.bytes().push_back(0);
        }
        m_sink.flushIfFull();
    }

    Extent dataFrom(std::uint64_t at) {
        if (at < m_data.begin || at >= m_data.end) {
            m_data = m_source.dataFrom(at);
        }
        return {std::max(at, m_data.begin), m_data.end};
    }

    void copy(Extent place) {
        while (place.begin < place.end) {
            const Extent data = dataFrom(place.begin);
            const std::uint64_t hole = std::min(data.begin, place.end) - place.begin;
            if (hole > 0) {
                m_sink.skip(hole);
                place.begin += hole;
                continue;
            }
            const auto count = static_cast<std::size_t>(
                std::min<std::uint64_t>({ByteWindow::kMostBytes, place.bytes(), data.end - place.begin}));
            copyPiece(place.begin, count, data.end - place.begin);
            place.begin += count;
        }
    }

    void copyPiece(std::uint64_t at, std::size_t count, std::uint64_t dataBytes) {
        const auto ahead =
            static_cast<std::size_t>(std::min<std::uint64_t>(ByteWindow::kMostBytes, dataBytes));
        const auto bytes = m_input.view(at, count, ahead);
        FileBytes& out = m_sink.bytes();
        const std::size_t begin = out.size();
        out.insert(out.end(), bytes.begin(), bytes.end());
        if (m_input.hasUnreadable() || bytes.size() != count) {
            out.resize(begin + count);
            readAll(m_source, at,
                    std::span(out).subspan(begin));  // throws where the disk cannot read these bytes
        }
        m_sink.flushIfFull();
    }

    Storage& m_source;
    ByteWindow m_input;
    const ClipScan& m_scan;
    const NewClipLayout& m_layout;
    Storage& m_target;
    Sink m_sink;
    Extent m_data;
    std::vector<std::size_t> m_unreadable;
    std::string m_reason;  // for the first of them
};

}  // namespace

NewClipLayout layOutNewClip(const ClipScan& scan, std::uint64_t formBytes) {
    return LayOut(scan, formBytes).run();
}

void writeNewClip(Storage& source, const ClipScan& scan, const NewClipLayout& layout, Storage& target,
                  const WriteStep& step) {
    Writer(source, scan, layout, target, step).run();
}

}  // namespace simhost::tool
