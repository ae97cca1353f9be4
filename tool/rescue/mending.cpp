#include "tool/rescue/mending.h"

#include <algorithm>
#include <cstddef>

#include "avi/four_char_code.h"
#include "tool/rescue/mended_view.h"
#include "tool/shared/base/tool_error.h"

namespace simhost::tool {
namespace {

using orvantis::riffCode;

constexpr std::uint64_t kMostSize = 0xFFFFFFFF;  // of a chunk or list
constexpr std::uint64_t kIndexReach = std::uint64_t{1} << 31;
constexpr std::uint32_t kHasIndexFlag = 0x10;  // AVIF_HASINDEX

[[noreturn]] void refuseInPlace(const std::string& why) {
    throw ToolError(kFailed, "the file cannot be mended where it lies: " + why, "write a new one, with --out",
                    "not-in-place");
}

class MendingPlan {
 public:
    MendingPlan(Storage& clip, const ClipScan& scan, const IndexCheck& check)
        : m_clip(clip), m_scan(scan), m_check(check), m_headers(scan.headers) {}

    Mending run() {
        if (!m_headers.formIsRight && m_headers.at != kListHeaderSize) {
            refuseInPlace("its headers do not stand at its beginning");
        }
        if (m_scan.forms.front().moviAt == 0) {
            refuseInPlace("the list of its data (movi) is damaged");
        }
        if (!m_scan.chunks.empty() && m_scan.chunks[0].offset() < m_scan.forms.front().moviAt) {
            refuseInPlace("some of its data stands in front of the list of its data (movi)");
        }
        m_out.oldSize = m_scan.fileSize;
        m_oldIndex = m_scan.forms.size() == 1;
        planTail();
        planIndexes();
        putIndexes();
        m_out.newSize = m_out.appendAt + m_out.append.size();
        if (m_scan.tail() == nullptr || m_scan.tail()->kind != Stretch::Kind::kZeros) {
            m_out.newSize = std::max(m_out.newSize, m_out.oldSize);
        }
        patchStretches();
        patchForms();
        patchHeaders();
        std::sort(m_out.patches.begin(), m_out.patches.end(),
                  [](const Patch& a, const Patch& b) { return a.at < b.at; });
        return std::move(m_out);
    }

 private:
    std::uint64_t placeOf(std::size_t headerPlace) const { return m_headers.at + headerPlace; }

    // Bytes that are so already need no patch.
    void patch(std::uint64_t at, FileBytes bytes) {
        FileBytes old(bytes.size());
        readAll(m_clip, at, old);
        if (old != bytes) {
            m_out.patches.push_back({at, std::move(bytes)});
        }
    }
    void patchWord(std::uint64_t at, std::uint64_t value) {
        FileBytes bytes;
        put32(bytes, static_cast<std::uint32_t>(std::min(value, kMostSize)));
        patch(at, std::move(bytes));
    }
    void patchCode(std::uint64_t at, std::uint32_t code) { patchWord(at, code); }
    std::uint32_t wordInClip(std::uint64_t at) {
        std::uint8_t bytes[4];
        readAll(m_clip, at, bytes);
        return wordOf(bytes);
    }

    void planTail() {
        const Stretch* tail = m_scan.tail();
        const bool overwrite = tail != nullptr && (tail->kind == Stretch::Kind::kZeros ||
                                                   tail->place.bytes() < kChunkHeaderSize);
        m_out.appendAt = overwrite ? tail->place.begin : m_scan.fileSize;
        if ((m_out.appendAt - m_scan.forms.back().at) % 2 != 0) {
            m_out.append.push_back(0);
        }
    }

    // One standard index for each stream and each stretch of the file that its 32-bit offsets reach.
    void planIndexes() {
        std::vector<std::vector<StandardIndexPlan>> plans(m_headers.streams.size());
        std::vector<std::uint64_t> bytes(plans.size());
        std::uint64_t base = 0;
        std::size_t first = 0;
        const auto close = [&](std::size_t last) {
            for (std::size_t s = 0; s < plans.size(); ++s) {
                if (!plans[s].empty() && plans[s].back().last == 0) {
                    plans[s].back().last = last;
                    plans[s].back().duration =
                        m_headers.streams[s].lengthOf(plans[s].back().entries, bytes[s]);
                    bytes[s] = 0;
                }
            }
        };
        for (std::size_t i = 0; i < m_scan.chunks.size(); ++i) {
            const FoundChunk& chunk = m_scan.chunks[i];
            if (i == 0 || chunk.offset() - base > kIndexReach) {
                close(i);
                base = chunk.offset() - kChunkHeaderSize;
                first = i;
            }
            if (chunk.isPalette()) {
                continue;
            }
            auto& mine = plans[chunk.stream()];
            if (mine.empty() || mine.back().last != 0) {
                mine.push_back({chunk.stream(), chunk.code(), base, 0, first, 0, 0, 0});
            }
            ++mine.back().entries;
            bytes[chunk.stream()] += chunk.size();
        }
        close(m_scan.chunks.size());
        m_openDml = true;
        for (std::size_t s = 0; s < plans.size(); ++s) {
            const std::uint64_t needed = kIndexHeaderSize + kSuperEntrySize * plans[s].size();
            m_openDml = m_openDml && (plans[s].empty() || m_headers.streams[s].indexBytes >= needed);
        }
        if (!m_openDml && !m_oldIndex) {
            refuseInPlace(
                "it has several parts (RIFF forms), and its headers have no room for an index of them all");
        }
        m_plans = std::move(plans);
    }

    void putIndexes() {
        FileBytes& out = m_out.append;
        for (auto& plans : m_plans) {
            for (StandardIndexPlan& plan : plans) {
                if (!m_openDml) {
                    break;
                }
                plan.at = m_out.appendAt + out.size();
                putStandardIndexStart(out, plan);
                for (std::size_t i = plan.first; i < plan.last; ++i) {
                    const FoundChunk& chunk = m_scan.chunks[i];
                    if (chunk.stream() == plan.stream && !chunk.isPalette()) {
                        putStandardEntry(out, plan.base, chunk.offset(), chunk);
                    }
                }
            }
        }
        if (!m_oldIndex) {
            return;
        }
        const std::uint64_t base = m_scan.forms.front().moviAt + kChunkHeaderSize;
        putHeader(out, riffCode("idx1"), kOldEntrySize * m_scan.chunks.size());
        for (std::size_t i = 0; i < m_scan.chunks.size(); ++i) {
            putOldEntry(out, m_scan.chunks[i].offset() - kChunkHeaderSize - base, m_scan.chunks[i]);
        }
    }

    void patchStretches() {
        for (const Stretch& stretch : m_scan.damaged) {
            const bool tail = stretch.place.end == m_scan.fileSize;
            std::uint64_t size = stretch.place.bytes() - kChunkHeaderSize;
            if (stretch.place.bytes() < kChunkHeaderSize || size > kMostSize ||
                stretch.place.begin >= m_out.appendAt) {
                continue;
            }
            const bool led = tail && (stretch.place.begin - m_scan.forms.back().at) % 2 == 0;
            size -= led ? 0 : size % 2;  // a byte is left over, rather than one of what follows taken
            FileBytes junk;
            putHeader(junk, riffCode("JUNK"), size);
            patch(stretch.place.begin, std::move(junk));
        }
        const std::uint64_t oldIndex = m_scan.forms.front().indexAt;
        if (m_oldIndex && oldIndex != 0) {
            patchCode(oldIndex, riffCode("JUNK"));
        }
    }

    void patchForms() {
        for (std::size_t i = 0; i < m_scan.forms.size(); ++i) {
            const FoundForm& form = m_scan.forms[i];
            const bool last = i + 1 == m_scan.forms.size();
            const std::uint64_t end = last ? m_out.appendAt + m_out.append.size() : m_scan.forms[i + 1].at;
            const std::uint64_t size = end - form.at - kChunkHeaderSize;
            if (size > kMostSize) {
                refuseInPlace("one of its parts (RIFF forms) is larger than 4 GiB");
            }
            if (i == 0 && !m_headers.formIsRight) {
                FileBytes start;
                putList(start, riffCode("RIFF"), size, riffCode("AVI "));
                patch(0, std::move(start));
            } else {
                patchWord(form.at + 4, size);
            }
            // A recorder that gives sizes now and then leaves a list that ends at a chunk, and has more
            // behind.
            const bool holdsAll =
                form.moviAt + kChunkHeaderSize + form.moviSize + form.moviSize % 2 >= form.dataEnd;
            if (form.moviAt == 0 || (form.moviSizeIsRight && holdsAll)) {
                continue;
            }
            std::uint64_t moviEnd = std::max(form.dataEnd, form.moviAt + kListHeaderSize);
            if (last && moviEnd != m_out.appendAt && (moviEnd - form.moviAt) % 2 != 0) {
                // Damage has moved what follows to an odd place, where readers do not look: they go on at the
                // index.
                moviEnd = m_out.appendAt + (m_out.appendAt - form.at) % 2;
            }
            patchWord(form.moviAt + 4, moviEnd - form.moviAt - kChunkHeaderSize);
            if (form.recAt > form.moviAt && form.recAt < moviEnd &&
                form.recAt + kChunkHeaderSize + wordInClip(form.recAt + 4) > moviEnd) {
                patchWord(form.recAt + 4, moviEnd - form.recAt - kChunkHeaderSize);
            }
        }
    }

    void patchListSizes(const HeaderChunk& list) {
        if (!list.sizeIsRight) {
            patchWord(placeOf(list.at + 4), list.end - list.at - kChunkHeaderSize);
        }
        for (const HeaderChunk& child : list.children) {
            patchListSizes(child);
        }
    }

    void patchHeaders() {
        patchListSizes(m_headers.root);
        std::uint64_t frames = 0;
        bool counted = false;
        for (std::size_t s = 0; s < m_headers.streams.size(); ++s) {
            const ClipStream& stream = m_headers.streams[s];
            const std::uint64_t length = m_check.streams[s].length;
            patchWord(placeOf(stream.headerAt + offsetof(orvantis::AviStreamHeader, dwLength)), length);
            if (stream.kind == ClipStream::Kind::kVideo && !counted) {
                counted = true;
                frames = length;
            }
            patchSuperIndex(stream, m_plans[s]);
        }
        if (m_headers.extendedAt != 0) {
            patchWord(placeOf(m_headers.extendedAt), frames);
        }
        if (m_oldIndex) {
            const std::uint64_t main = placeOf(m_headers.mainAt);
            patchWord(main + offsetof(orvantis::AviMainHeader, dwTotalFrames), frames);
            const std::uint64_t flags = main + offsetof(orvantis::AviMainHeader, dwFlags);
            patchWord(flags, wordInClip(flags) | kHasIndexFlag);
        }
    }

    // The place may be padding that was kept for the index; an old one that cannot be renewed is put out of
    // force.
    void patchSuperIndex(const ClipStream& stream, const std::vector<StandardIndexPlan>& plans) {
        if (stream.indexBytes == 0) {
            return;
        }
        const std::uint64_t code = placeOf(stream.indexAt) - kChunkHeaderSize;
        const bool wanted = m_openDml && !plans.empty();
        if (wanted) {
            patch(placeOf(stream.indexAt), superIndex(plans, stream.indexBytes));
        }
        patchCode(code, wanted ? riffCode("indx") : riffCode("JUNK"));
    }

    Storage& m_clip;
    const ClipScan& m_scan;
    const IndexCheck& m_check;
    const ClipHeaders& m_headers;
    Mending m_out;
    std::vector<std::vector<StandardIndexPlan>> m_plans;  // of each stream
    bool m_openDml = false;
    bool m_oldIndex = false;
};

// Garbage can be read in more than one way, and what is mended around it can turn the scales.
bool findsAgain(const ClipScan& mended, const ClipScan& scan) {
    std::size_t next = 0;
    for (std::size_t i = 0; i < scan.chunks.size(); ++i, ++next) {
        const FoundChunk& wanted = scan.chunks[i];
        while (next < mended.chunks.size() && mended.chunks[next].offset() < wanted.offset()) {
            ++next;
        }
        if (next == mended.chunks.size() || mended.chunks[next].offset() != wanted.offset() ||
            mended.chunks[next].size() != wanted.size() || mended.chunks[next].code() != wanted.code()) {
            return false;
        }
    }
    return true;
}

}  // namespace

Mending planMending(Storage& clip, const ClipScan& scan, const IndexCheck& check, const ScanStep& step) {
    Mending out = MendingPlan(clip, scan, check).run();
    MendedView mended(clip, out);
    if (!findsAgain(scanClip(mended, step), scan)) {
        refuseInPlace("its damaged stretches can be read in more than one way");
    }
    return out;
}

}  // namespace simhost::tool
