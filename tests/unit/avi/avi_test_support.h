// Short forms that several AVI tests use.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "avi/avi_reader.h"
#include "tests/support/avi_builder/avi_builder.h"
#include "tests/support/memory_file.h"

namespace orvantis::test {

/// A reader with the file it has parsed.
struct Parsed {
    explicit Parsed(const Bytes& bytes, bool headerOnly = false)
        : file(std::make_unique<MemoryFile>(bytes)), usable(reader.parse(*file, headerOnly)) {}

    const AviStream& stream(std::size_t position) const { return *reader.streams.at(position); }

    std::unique_ptr<MemoryFile> file;
    AviReader reader;
    bool usable;
};

/// A video stream (0) of `frames` frames of 100 + number bytes each and a stereo stream (1) of chunks half as
/// long.
inline AviBuilder smallClip(int frames = 3) {
    AviBuilder avi;
    avi.addStream(videoStream("O8Y2", 16, 8, 25, 1)).addStream(pcmStream(2, 48000, 16));
    for (int i = 0; i < frames; ++i) {
        const auto number = static_cast<std::uint8_t>(i);
        avi.addFilledChunk(0, 100U + number, number, i % 2 == 0);
        avi.addFilledChunk(1, 40, static_cast<std::uint8_t>(0x80U + number));
    }
    return avi;
}

/// strh data: type, 20 bytes, scale, rate, the rest zero.
inline Bytes streamHeader(std::string_view type, std::uint32_t scale = 1, std::uint32_t rate = 25) {
    RiffBuilder data;
    data.code(type).fill(16).u32(scale).u32(rate).fill(28);
    return data.take();
}

}  // namespace orvantis::test
