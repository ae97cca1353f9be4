// Rescues the input as a damaged AVI file: what is found lies in the file and apart, the new file has exactly
// that, byte for byte, a change in place finds it again and is taken back to the byte, and neither memory nor
// reading exceed what the file's size justifies.
#include <algorithm>
#include <span>

#include "tests/fuzz/fuzz_target.h"
#include "tests/fuzz/memory_bound.h"
#include "tests/rescue/clip_truth.h"
#include "tests/rescue/crash_disk.h"
#include "tests/support/allocation_meter/allocation_meter.h"
#include "tool/rescue/index_check.h"
#include "tool/rescue/mending.h"
#include "tool/rescue/new_clip.h"
#include "tool/rescue/undo_file.h"

namespace simhost::tool {
namespace {

void checkFound(const ClipScan& scan) {
    std::uint64_t last = 0;
    for (std::size_t i = 0; i < scan.chunks.size(); ++i) {
        const FoundChunk& chunk = scan.chunks[i];
        FUZZ_CHECK(chunk.offset() >= last + 8 && chunk.end() <= scan.fileSize);
        FUZZ_CHECK(chunk.stream() < scan.headers.streams.size());
        last = chunk.end();
    }
    last = 0;
    std::size_t next = 0;
    std::uint64_t bytes = 0;
    for (const Stretch& stretch : scan.damaged) {
        FUZZ_CHECK(stretch.place.begin >= last && stretch.place.end > stretch.place.begin);
        FUZZ_CHECK(stretch.place.end <= scan.fileSize);
        last = stretch.place.end;
        bytes += stretch.place.bytes();
        while (next < scan.chunks.size() && scan.chunks[next].end() <= stretch.place.begin) {
            ++next;
        }
        FUZZ_CHECK(next == scan.chunks.size() || scan.chunks[next].offset() - 8 >= stretch.place.end);
    }
    FUZZ_CHECK(scan.damagedCount > scan.damaged.size() || scan.damagedBytes == bytes);
    FUZZ_CHECK(scan.headers.fault.empty() || scan.chunks.empty());
}

// The data of chunks, one behind the other, with their codes and sizes.
TestBytes contents(const TestBytes& file, const ClipScan& scan) {
    TestBytes out;
    for (std::size_t i = 0; i < scan.chunks.size(); ++i) {
        const auto begin = file.begin() + static_cast<std::ptrdiff_t>(scan.chunks[i].offset());
        out.insert(out.end(), begin - 8, begin + scan.chunks[i].size());
    }
    return out;
}

void checkNewFile(MemoryStorage& file, const TestBytes& bytes, const ClipScan& scan) {
    const TestBytes wanted = contents(bytes, scan);
    for (const std::uint64_t formBytes : {std::uint64_t{1} << 30, std::uint64_t{400}}) {
        const NewClipLayout layout = layOutNewClip(scan, formBytes);
        TestBytes out;
        MemoryStorage target(out);
        writeNewClip(file, scan, layout, target);
        FUZZ_CHECK(out.size() == layout.size);
        const ClipScan again = scanClip(target);
        checkFound(again);
        FUZZ_CHECK(again.headers.fault.empty());
        FUZZ_CHECK(contents(out, again) == wanted);
    }
}

void checkInPlace(const TestBytes& bytes, const std::vector<ChunkFact>& wanted) {
    CrashDisk disk(bytes);
    {
        const auto clip = disk.openToChange("clip");
        ClipScan scan = scanClip(*clip);
        const IndexCheck check = checkIndexes(*clip, scan);
        Mending mending;
        try {
            mending = planMending(*clip, scan, check);
        } catch (const ToolError& error) {
            FUZZ_CHECK(error.kind() == "not-in-place");
            return;
        }
        applyMending(disk, *clip, "clip.undo", "part", mending);
        FUZZ_CHECK(clip->size() == mending.newSize);
    }
    TestBytes mended = disk.bytes("clip");
    MemoryStorage file(mended);
    const std::vector<ChunkFact> found = foundChunks(scanClip(file));
    for (const ChunkFact& chunk : wanted) {
        FUZZ_CHECK(std::find(found.begin(), found.end(), chunk) != found.end());
    }
    undoMending(disk, "clip", "clip.undo");
    FUZZ_CHECK(disk.bytes("clip") == bytes);
}

void rescueAll(std::span<const std::uint8_t> input) {
    TestBytes bytes(input.begin(), input.end());
    MemoryStorage file(bytes);
    std::uint64_t last = 0;
    orvantis::test::startCounting();
    ClipScan scan = scanClip(file, [&last, &input](std::uint64_t at) {
        FUZZ_CHECK(at <= input.size());
        last = at;
    });
    FUZZ_CHECK(orvantis::test::counted().peak <= fuzz::memoryBound(input.size()));
    FUZZ_CHECK(file.bytesRead <= (std::uint64_t{1} << 20) + 2048 * input.size());
    FUZZ_CHECK(!scan.headers.fault.empty() || last == input.size());
    checkFound(scan);
    if (scan.chunks.empty()) {
        return;
    }
    (void)checkIndexes(file, scan);
    const std::vector<ChunkFact> found = foundChunks(scan);
    checkNewFile(file, bytes, scan);
    FUZZ_CHECK(file.writes == 0 && std::equal(bytes.begin(), bytes.end(), input.begin(), input.end()));
    checkInPlace(bytes, found);
}

}  // namespace
}  // namespace simhost::tool

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    simhost::tool::rescueAll({data, size});
    return 0;
}
