// Files that make a reader's work as large as their size allows, in any size: for tests that the work grows
// no faster than the file.
#pragma once

#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "tests/unit/avi/avi_test_support.h"

namespace hostile {

using orvantis::test::Bytes;
using orvantis::test::RiffBuilder;

struct Shape {
    std::string name;
    std::function<Bytes(std::uint64_t bytes)> make;  ///< a file of about that size
};

inline void PrintTo(const Shape& shape,
                    std::ostream* out) {  // NOLINT(readability-identifier-naming): GoogleTest's
    *out << shape.name;
}

inline RiffBuilder& openHeaders(RiffBuilder& riff) {
    return riff.beginList("RIFF", "AVI ").beginList("LIST", "hdrl").begin("avih").fill(56).end();
}

inline Bytes filled(RiffBuilder& riff, std::uint64_t bytes) {
    if (riff.position() < bytes) {
        riff.fill(static_cast<std::size_t>(bytes - riff.position()));
    }
    return riff.take();
}

/// The smallest chunks there are, in the headers.
inline Bytes chunks(std::uint64_t bytes) {
    RiffBuilder riff;
    openHeaders(riff);
    return filled(riff, bytes);
}

/// Chains of lists with one child each.
inline Bytes chains(std::uint64_t bytes) {
    RiffBuilder riff;
    openHeaders(riff);
    while (riff.position() < bytes) {
        for (int i = 0; i < 60; ++i) {
            riff.beginList("LIST", "strl");
        }
        for (int i = 0; i < 60; ++i) {
            riff.end();
        }
    }
    return filled(riff, bytes);
}

/// Stream lists, each with an index of nothing.
inline Bytes streams(std::uint64_t bytes) {
    RiffBuilder riff;
    openHeaders(riff);
    while (riff.position() < bytes) {
        riff.beginList("LIST", "strl").chunk("strh", Bytes(56)).begin("strf").end().begin("indx").end().end();
    }
    return filled(riff, bytes);
}

/// Lists that reach to the end of the file by their size, while their padded length wraps to 8 bytes: each
/// list holds all that follow it, on every level again. The type of a list is the header of the chunk that
/// leads to the next.
inline Bytes overlappingLists(std::uint64_t bytes) {
    RiffBuilder riff;
    openHeaders(riff);
    while (riff.position() < bytes) {
        riff.code("LIST").u32(0xFFFFFFFF).code("strl").u32(4).u32(0);
    }
    return riff.take();
}

/// Chunks whose padded length is next to nothing.
inline Bytes creepingChunks(std::uint64_t bytes) {
    RiffBuilder riff;
    openHeaders(riff);
    while (riff.position() < bytes) {
        riff.u32(0xFFFFFFFA);
    }
    return riff.take();
}

/// One video stream with a super index that names the same place `size / 16` times: an index of `namedBytes`.
inline Bytes namedOften(std::uint64_t bytes, std::uint32_t namedBytes, bool idx1) {
    RiffBuilder riff;
    openHeaders(riff);
    riff.beginList("LIST", "strl")
        .chunk("strh", orvantis::test::streamHeader("vids"))
        .chunk("strf", Bytes(40));
    riff.begin("indx");
    const auto names = static_cast<std::uint32_t>(bytes / 32);
    const std::uint32_t entries = namedBytes > 24 ? (namedBytes - 24) / 8 : 0;
    riff.u16(4).u8(0).u8(0).u32(names).code("00dc").u64(0).u32(0);
    const std::uint64_t chunk = riff.position() + names * 16ULL + 12;
    for (std::uint32_t i = 0; i < names; ++i) {
        riff.u64(chunk).u32(namedBytes + 8).u32(0);
    }
    riff.end().end().end();
    riff.beginList("LIST", "movi").end();
    riff.begin(idx1 ? "idx1" : "JUNK");
    while (riff.position() < chunk + 8) {
        riff.u8(0);
    }
    riff.u16(2).u8(0).u8(1).u32(entries).code("00dc").u64(0).u32(0);
    while (riff.position() < bytes) {
        riff.code("00dc").u32(0).code("00dc").u32(0);
    }
    return filled(riff, bytes);
}

/// Half of the file short stream lists, the other half an idx1 with entries for all that can have some.
inline Bytes streamsAndIdx1(std::uint64_t bytes) {
    RiffBuilder riff;
    openHeaders(riff);
    while (riff.position() < bytes / 2) {
        riff.beginList("LIST", "strl").chunk("strh", Bytes(56)).begin("strf").end().end();
    }
    riff.end();
    riff.beginList("LIST", "movi").end().begin("idx1");
    for (std::uint32_t i = 0; riff.position() < bytes; ++i) {
        riff.u8(static_cast<std::uint8_t>('0' + i / 10 % 10))
            .u8(static_cast<std::uint8_t>('0' + i % 10))
            .u8('d')
            .u8('c')
            .u32(0)
            .u32(4)
            .u32(8);
    }
    return riff.take();
}

/// idx1 full of empty chunks of stream 0, but for the last.
inline Bytes emptyFrames(std::uint64_t bytes) {
    RiffBuilder riff;
    openHeaders(riff);
    riff.beginList("LIST", "strl")
        .chunk("strh", orvantis::test::streamHeader("vids"))
        .chunk("strf", Bytes(40));
    riff.end().end();
    riff.beginList("LIST", "movi").end().begin("idx1");
    while (riff.position() < bytes) {
        riff.code("00dc").u32(0).u32(4).u32(0);
    }
    riff.code("00dc").u32(0).u32(4).u32(8);
    return riff.take();
}

inline std::vector<Shape> shapes() {
    return {
        {"chunks", chunks},
        {"chains of lists", chains},
        {"streams", streams},
        {"streams and idx1", streamsAndIdx1},
        {"overlapping lists", overlappingLists},
        {"creeping chunks", creepingChunks},
        {"a small index, named often", [](std::uint64_t bytes) { return namedOften(bytes, 32, false); }},
        {"the same, and idx1", [](std::uint64_t bytes) { return namedOften(bytes, 32, true); }},
        {"an index of a quarter of the file, named often",
         [](std::uint64_t bytes) {
             return namedOften(bytes, static_cast<std::uint32_t>(bytes / 4) & ~7U, true);
         }},
        {"empty frames", emptyFrames},
    };
}

}  // namespace hostile
