// The AVI format's rules once more, in the plainest way there is: one read after the other from a vector of
// bytes, no windows, no limits, no care for time or memory. Tests compare AviReader with it on undamaged, cut
// and changed files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "avi/avi_reader.h"
#include "tests/support/avi_builder/riff_builder.h"

namespace orvantis::test {

struct PlainEntry {
    std::uint64_t offset;
    std::uint32_t size;
    std::uint64_t start;
    bool keyFrame;

    bool operator==(const PlainEntry&) const = default;
};

struct PlainStream {
    std::uint64_t ordinal = 0;
    Bytes header;
    Bytes format;
    Bytes superIndex;                    ///< the entries' bytes
    std::vector<Bytes> standardIndexes;  ///< header and used entries of each
    bool hasOpenDmlIndex = false;
    std::vector<PlainEntry> legacyEntries;
    std::vector<PlainEntry> openDmlEntries;

    bool operator==(const PlainStream&) const = default;
};

struct PlainAvi {
    bool usable = false;
    std::string errors;
    Bytes mainHeader = Bytes(56);
    Bytes extHeader = Bytes(248);
    std::vector<PlainStream> streams;

    bool operator==(const PlainAvi&) const = default;
};

/// Bytes of a file that cannot be read; by default none.
struct ByteRange {
    std::uint64_t from = UINT64_MAX;
    std::uint64_t to = UINT64_MAX;  ///< behind the last
};

/// A full parse of `file`.
PlainAvi parsePlainly(const Bytes& file, ByteRange unreadable = {});

/// What a reader has found, in the same shape.
PlainAvi asPlain(const AviReader& reader, bool usable);

/// In words, for failure messages: the first difference.
std::string firstDifference(const PlainAvi& expected, const PlainAvi& actual);

}  // namespace orvantis::test
