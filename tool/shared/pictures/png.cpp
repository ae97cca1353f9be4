#include "tool/shared/pictures/png.h"

#include <array>
#include <cstdlib>
#include <string_view>

#include "tool/shared/base/deflate.h"

namespace simhost::tool {
namespace {

using Bytes = std::vector<std::uint8_t>;

void append32(Bytes& out, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        out.push_back(static_cast<std::uint8_t>(value >> shift));
    }
}

void appendChunk(Bytes& out, std::string_view type, const std::uint8_t* data, std::size_t size) {
    append32(out, static_cast<std::uint32_t>(size));
    const std::size_t start = out.size();
    out.insert(out.end(), type.begin(), type.end());
    out.insert(out.end(), data, data + size);
    append32(out, crc32({out.data() + start, out.size() - start}));
}

// The rows as PNG stores them: samples with the high byte first, each row behind the number of its filter.
// The filter is the one of "none", "left" and "above" whose differences are smallest, which compresses best.
Bytes filteredRows(const Picture& picture) {
    const std::size_t sampleBytes = picture.bits == 16 ? 2 : 1;
    const std::size_t pixelBytes = sampleBytes * static_cast<unsigned>(picture.channels);
    const std::size_t rowBytes = pixelBytes * static_cast<std::size_t>(picture.width);
    Bytes out;
    out.reserve((rowBytes + 1) * static_cast<std::size_t>(picture.height));
    Bytes above(rowBytes, 0);
    Bytes row(rowBytes, 0);
    std::array<Bytes, 3> filtered;
    filtered.fill(Bytes(rowBytes));
    for (std::int32_t y = 0; y < picture.height; ++y) {
        const std::uint16_t* samples = picture.row(y);
        for (std::size_t i = 0; i < rowBytes / sampleBytes; ++i) {
            if (sampleBytes == 2) {
                row[2 * i] = static_cast<std::uint8_t>(samples[i] >> 8);
                row[2 * i + 1] = static_cast<std::uint8_t>(samples[i]);
            } else {
                row[i] = static_cast<std::uint8_t>(samples[i]);
            }
        }
        std::array<std::size_t, 3> cost{};
        for (std::size_t i = 0; i < rowBytes; ++i) {
            const int left = i < pixelBytes ? 0 : row[i - pixelBytes];
            const int value = row[i];
            const std::array<int, 3> results = {value, value - left, value - above[i]};
            for (std::size_t f = 0; f < filtered.size(); ++f) {
                filtered[f][i] = static_cast<std::uint8_t>(results[f]);
                cost[f] += static_cast<std::size_t>(std::abs(static_cast<std::int8_t>(filtered[f][i])));
            }
        }
        std::size_t best = 0;
        for (std::size_t f = 1; f < filtered.size(); ++f) {
            best = cost[f] < cost[best] ? f : best;
        }
        out.push_back(static_cast<std::uint8_t>(best));  // filter types 0, 1, 2
        out.insert(out.end(), filtered[best].begin(), filtered[best].end());
        above.swap(row);
    }
    return out;
}

}  // namespace

Bytes encodePng(const Picture& picture) {
    const Bytes compressed = zlibStream(filteredRows(picture));
    Bytes out = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    Bytes header;
    append32(header, static_cast<std::uint32_t>(picture.width));
    append32(header, static_cast<std::uint32_t>(picture.height));
    header.push_back(static_cast<std::uint8_t>(picture.bits));
    header.push_back(picture.channels == 4 ? 6 : 2);  // colour type: RGB with alpha, or RGB
    header.insert(header.end(), {0, 0, 0});           // deflate, the five filters, not interlaced
    appendChunk(out, "IHDR", header.data(), header.size());
    appendChunk(out, "IDAT", compressed.data(), compressed.size());
    appendChunk(out, "IEND", nullptr, 0);
    return out;
}

}  // namespace simhost::tool
