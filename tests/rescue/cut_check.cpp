#include "tests/rescue/cut_check.h"

#include "tests/rescue/crash_disk.h"
#include "tool/rescue/mending.h"
#include "tool/rescue/new_clip.h"
#include "tool/rescue/undo_file.h"

namespace simhost::tool {
namespace {

std::string wrongInNew(Storage& cut, const ClipScan& scan, const std::vector<ChunkFact>& expected) {
    const std::size_t streams = scan.headers.streams.size();
    const std::vector<StreamData> data = dataOf(cut, expected, streams);
    // Small forms, so that the file has several.
    for (const std::uint64_t formBytes : {std::uint64_t{1} << 30, std::uint64_t{20'000}}) {
        TestBytes out;
        MemoryStorage target(out);
        const NewClipLayout layout = layOutNewClip(scan, formBytes);
        writeNewClip(cut, scan, layout, target);
        if (out.size() != layout.size) {
            return "the new file has another size than planned";
        }
        const ClipScan again = scanClip(target);
        if (again.damagedCount != 0) {
            return "the new file is damaged";
        }
        if (indexedChunks(target) != foundChunks(again)) {
            return "the new file's index is not that of its chunks";
        }
        if (dataOf(target, foundChunks(again), streams) != data) {
            return "the new file's chunks are not the old ones";
        }
    }
    return {};
}

std::string wrongInPlace(const TestBytes& cut, const std::vector<ChunkFact>& expected) {
    CrashDisk disk(cut);
    {
        const auto clip = disk.openToChange("clip");
        ClipScan scan = scanClip(*clip);
        const IndexCheck check = checkIndexes(*clip, scan);
        if (!check.gains()) {
            return {};
        }
        applyMending(disk, *clip, "clip.undo", "part", planMending(*clip, scan, check));
    }
    TestBytes mended = disk.bytes("clip");
    MemoryStorage file(mended);
    if (indexedChunks(file) != expected) {
        return "the mended file's index is wrong";
    }
    ClipScan again = scanClip(file);
    if (foundChunks(again) != expected || again.damagedCount != 0) {
        return "the mended file is damaged";
    }
    if (checkIndexes(file, again).gains()) {
        return "the mended file would gain from a rescue";
    }
    undoMending(disk, "clip", "clip.undo");
    return disk.bytes("clip") == cut ? std::string() : "the old bytes did not come back";
}

}  // namespace

std::string wrongInScan(Storage& whole, const std::vector<ChunkFact>& truth, std::uint64_t size) {
    CutStorage cut(whole, size);
    const std::vector<ChunkFact> expected = wholeBefore(truth, size);
    const ClipScan scan = scanClip(cut);
    const std::vector<ChunkFact> found = foundChunks(scan);
    if (found == expected) {
        return {};
    }
    return "found " + std::to_string(found.size()) + " of " + std::to_string(expected.size()) + " chunks " +
           scan.headers.fault;
}

std::string wrongInRescue(TestBytes& whole, const std::vector<ChunkFact>& truth, std::uint64_t size) {
    const std::vector<ChunkFact> expected = wholeBefore(truth, size);
    if (expected.empty()) {
        return {};
    }
    TestBytes bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
    MemoryStorage cut(bytes);
    const ClipScan scan = scanClip(cut);
    if (foundChunks(scan) != expected) {
        return "found others than the whole chunks";
    }
    const std::string wrong = wrongInNew(cut, scan, expected);
    return wrong.empty() ? wrongInPlace(bytes, expected) : wrong;
}

}  // namespace simhost::tool
