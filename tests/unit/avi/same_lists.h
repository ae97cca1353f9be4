// Compares a chunk list with a plain one: each entry by every way there is, the sums, and the lookups.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "avi/chunk_list.h"
#include "tests/unit/avi/plain_chunk_list.h"

namespace orvantis::test {

inline bool sameEntry(const IndexEntry& a, const IndexEntry& b) {
    return a.offset == b.offset && a.size == b.size && a.reserved == b.reserved && a.start == b.start &&
           a.keyFrame == b.keyFrame;
}

/// In words, the first difference between them when `position` is looked up; empty when there is none.
inline std::string lookupDifference(const PlainChunkList& expected, const ChunkList& actual,
                                    std::uint64_t position) {
    const PlainChunkList::Iterator want = expected.findByPosition(position);
    const ChunkList::Iterator have = actual.findByPosition(position);
    const bool same = want == expected.end()
                          ? have == actual.end()
                          : have != actual.end() && want.number() == have.number() && sameEntry(*want, *have);
    return same ? "" : "position " + std::to_string(position);
}

/// In words, the first difference; empty when there is none. Lookups are compared at the ends and in the
/// middle of every `lookupStep`th chunk.
inline std::string listDifference(const PlainChunkList& expected, const ChunkList& actual,
                                  std::size_t lookupStep = 1) {
    if (expected.size() != actual.size() || expected.empty() != actual.empty()) {
        return "size";
    }
    if (expected.totalBytes() != actual.totalBytes()) {
        return "sum";
    }
    ChunkList::Iterator walk = actual.begin();
    for (std::size_t i = 0; i < expected.size(); ++i, ++walk) {
        const IndexEntry& want = expected[i];
        const ChunkPlace place = actual.placeOf(i);
        if (!sameEntry(want, actual[i]) || place.offset != want.offset || place.size != want.size) {
            return "entry " + std::to_string(i);
        }
        if (walk == actual.end() || walk.number() != i || !sameEntry(want, *walk)) {
            return "walk at " + std::to_string(i);
        }
        if (i % lookupStep != 0) {
            continue;
        }
        for (const std::uint64_t position :
             {want.start, want.start + want.size / 2, want.start + want.size - 1, want.start + want.size}) {
            std::string difference = lookupDifference(expected, actual, position);
            if (!difference.empty()) {
                return difference;
            }
        }
    }
    if (!(walk == actual.end())) {
        return "end of the walk";
    }
    if (!expected.empty() && !sameEntry(expected.back(), actual.back())) {
        return "last entry";
    }
    for (const std::uint64_t position : {std::uint64_t{0}, expected.totalBytes() - 1, expected.totalBytes(),
                                         expected.totalBytes() + 1, ~std::uint64_t{0}}) {
        std::string difference = lookupDifference(expected, actual, position);
        if (!difference.empty()) {
            return difference;
        }
    }
    return "";
}

}  // namespace orvantis::test
