#include "tool/rescue/undo_file.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <vector>

#include "tool/shared/base/interruption.h"
#include "tool/shared/base/tool_error.h"

namespace simhost::tool {
namespace {

constexpr std::array<std::uint8_t, 8> kMark = {'O', 'r', 'v', 'U', 'n', 'd', 'o', '1'};
constexpr std::uint64_t kMostUndoBytes = std::uint64_t{1} << 32;

struct UndoRange {
    std::uint64_t at = 0;
    FileBytes before;
    FileBytes after;
};

struct Undo {
    std::uint64_t oldSize = 0;
    std::uint64_t newSize = 0;
    std::vector<UndoRange> ranges;
};

// FNV-1a: tells a whole undo file from one that is cut off or overwritten.
std::uint64_t checksum(const std::uint8_t* bytes, std::size_t count) {
    std::uint64_t out = 0xCBF29CE484222325;
    for (std::size_t i = 0; i < count; ++i) {
        out = (out ^ bytes[i]) * 0x100000001B3;
    }
    return out;
}

Undo makeUndo(Storage& clip, const Mending& mending) {
    Undo out{mending.oldSize, mending.newSize, {}};
    for (const Patch& patch : mending.patches) {
        out.ranges.push_back({patch.at, FileBytes(patch.bytes.size()), patch.bytes});
    }
    if (mending.appendAt < mending.oldSize) {
        const auto count = static_cast<std::size_t>(
            std::min<std::uint64_t>(mending.append.size(), mending.oldSize - mending.appendAt));
        out.ranges.push_back(
            {mending.appendAt, FileBytes(count),
             FileBytes(mending.append.begin(), mending.append.begin() + static_cast<std::ptrdiff_t>(count))});
    }
    for (UndoRange& range : out.ranges) {
        readAll(clip, range.at, range.before);
    }
    return out;
}

FileBytes bytesOf(const Undo& undo) {
    FileBytes out(kMark.begin(), kMark.end());
    put64(out, undo.oldSize);
    put64(out, undo.newSize);
    put64(out, undo.ranges.size());
    for (const UndoRange& range : undo.ranges) {
        put64(out, range.at);
        put64(out, range.before.size());
        out.insert(out.end(), range.before.begin(), range.before.end());
        out.insert(out.end(), range.after.begin(), range.after.end());
    }
    put64(out, checksum(out.data(), out.size()));
    return out;
}

class UndoReader {
 public:
    explicit UndoReader(FileBytes bytes) : m_bytes(std::move(bytes)) {}

    bool read(Undo& out) {
        const std::size_t end = m_bytes.size();
        if (end < kMark.size() + 32 || !std::equal(kMark.begin(), kMark.end(), m_bytes.begin())) {
            return false;
        }
        m_at = end - 8;
        std::uint64_t sum = 0;
        std::memcpy(&sum, m_bytes.data() + m_at, sizeof sum);
        if (sum != checksum(m_bytes.data(), m_at)) {
            return false;
        }
        m_end = m_at;
        m_at = kMark.size();
        std::uint64_t ranges = 0;
        if (!number(out.oldSize) || !number(out.newSize) || !number(ranges)) {
            return false;
        }
        for (std::uint64_t i = 0; i < ranges; ++i) {
            UndoRange range;
            std::uint64_t size = 0;
            if (!number(range.at) || !number(size) || !piece(size, range.before) ||
                !piece(size, range.after)) {
                return false;
            }
            out.ranges.push_back(std::move(range));
        }
        return m_at == m_end;
    }

 private:
    bool number(std::uint64_t& out) {
        if (m_end - m_at < sizeof out) {
            return false;
        }
        std::memcpy(&out, m_bytes.data() + m_at, sizeof out);
        m_at += sizeof out;
        return true;
    }
    bool piece(std::uint64_t size, FileBytes& out) {
        if (m_end - m_at < size) {
            return false;
        }
        const auto begin = m_bytes.begin() + static_cast<std::ptrdiff_t>(m_at);
        out.assign(begin, begin + static_cast<std::ptrdiff_t>(size));
        m_at += static_cast<std::size_t>(size);
        return true;
    }

    FileBytes m_bytes;
    std::size_t m_at = 0;
    std::size_t m_end = 0;
};

Undo readUndo(Disk& disk, const std::string& path) {
    if (!disk.exists(path)) {
        throw ToolError(kFailed, "there is nothing to undo: '" + path + "' is missing",
                        "it lies beside a clip that \"rescue --in-place\" has changed", "missing-file");
    }
    const auto file = disk.openToRead(path);
    Undo out;
    if (file->size() <= kMostUndoBytes) {
        FileBytes bytes(static_cast<std::size_t>(file->size()));
        readAll(*file, 0, bytes);
        if (UndoReader(std::move(bytes)).read(out)) {
            return out;
        }
    }
    throw ToolError(kFailed, "'" + path + "' is not a whole undo file; the clip is left as it is", "",
                    "bad-undo-file");
}

// A program that wrote into the clip since must not lose its work.
void requireOurs(Storage& clip, const Undo& undo) {
    const std::uint64_t size = clip.size();
    bool ours = size >= std::min(undo.oldSize, undo.newSize) && size <= std::max(undo.oldSize, undo.newSize);
    for (std::size_t r = 0; ours && r < undo.ranges.size(); ++r) {
        const UndoRange& range = undo.ranges[r];
        FileBytes now(range.before.size());
        now.resize(clip.read(range.at, now));
        for (std::size_t i = 0; ours && i < now.size(); ++i) {
            ours = now[i] == range.before[i] || now[i] == range.after[i];
        }
    }
    if (!ours) {
        throw ToolError(
            kFailed, "the clip has been changed since by another program, so its old bytes are not put back",
            "", "changed-since");
    }
}

void putBack(Storage& clip, const Undo& undo) {
    for (const UndoRange& range : undo.ranges) {
        clip.write(range.at, range.before);
    }
    clip.resize(undo.oldSize);
    clip.flush();
}

void change(Storage& clip, const Mending& mending) {
    clip.write(mending.appendAt, mending.append);
    clip.flush();
    for (const Patch& patch : mending.patches) {
        throwIfInterrupted();
        clip.write(patch.at, patch.bytes);
    }
    clip.flush();
    if (mending.newSize < mending.oldSize) {
        clip.resize(mending.newSize);
        clip.flush();
    }
}

}  // namespace

std::string undoPathOf(const std::string& clipPath) {
    return clipPath + ".undo";
}

void applyMending(Disk& disk, Storage& clip, const std::string& undoPath, const std::string& part,
                  const Mending& mending) {
    const Undo undo = makeUndo(clip, mending);
    {
        const auto file = disk.create(part);
        file->write(0, bytesOf(undo));
        file->flush();
    }
    disk.publish(part, undoPath);
    try {
        change(clip, mending);
    } catch (const ToolError&) {
        // When this fails too, the undo file still can do it.
        putBack(clip, undo);
        disk.remove(undoPath);
        throw;
    }
}

void undoMending(Disk& disk, const std::string& clipPath, const std::string& undoPath) {
    const Undo undo = readUndo(disk, undoPath);
    {
        const auto clip = disk.openToChange(clipPath);
        requireOurs(*clip, undo);
        putBack(*clip, undo);
    }
    disk.remove(undoPath);
}

}  // namespace simhost::tool
