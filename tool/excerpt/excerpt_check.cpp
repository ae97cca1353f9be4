#include "tool/excerpt/excerpt_check.h"

#include <algorithm>
#include <tuple>

namespace simhost::tool {
namespace {

auto valuesOf(const StreamFacts& s) {
    return std::tie(s.kind, s.format, s.rate, s.scale, s.declaredLength, s.frameBytes, s.samplesPerSecond,
                    s.index, s.base, s.openDmlRefused, s.chunks, s.bytes, s.bytesInFile, s.emptyChunks,
                    s.longestEmptyRun, s.chunksPastEnd);
}

bool sameGap(const Gap& a, const Gap& b) {
    return a.position == b.position && a.bytes == b.bytes;
}

}  // namespace

std::vector<std::string> structureDifferences(const AviFacts& file, const AviFacts& excerpt) {
    std::vector<std::string> out;
    const auto check = [&out](bool same, const char* what) {
        if (!same) {
            out.emplace_back(what);
        }
    };
    check(file.fileSize == excerpt.fileSize, "the size");
    check(file.usable == excerpt.usable && file.problems == excerpt.problems, "what is damaged");
    check(std::ranges::equal(file.streams, excerpt.streams,
                             [](const auto& a, const auto& b) { return valuesOf(a) == valuesOf(b); }),
          "the streams");
    check(file.frameSizes == excerpt.frameSizes, "the sizes of the frames");
    check(file.gapCount == excerpt.gapCount && std::ranges::equal(file.gaps, excerpt.gaps, sameGap),
          "the stretches that no index mentions");
    check(file.unindexedChunks == excerpt.unindexedChunks, "the chunks that no index names");
    return out;
}

}  // namespace simhost::tool
