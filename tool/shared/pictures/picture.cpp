#include "tool/shared/pictures/picture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <span>
#include <string_view>

#include "host/pixel_formats.h"

namespace simhost::tool {
namespace {

enum class Kind { kBytes, kWords, kYuyv, kUyvy, kV210, kRgb10 };

// How to read a format. For kBytes and kWords: the places of the first three components and alpha in a pixel,
// -1 for no alpha.
struct Reader {
    std::uint32_t format;
    Kind kind;
    bool yuv;
    std::array<int, 4> places;
};

// The components are R G B A or Y U V A.
constexpr Reader kReaders[] = {
    {host::PrPixelFormat_BGRA_4444_8u, Kind::kBytes, false, {2, 1, 0, 3}},
    {host::PrPixelFormat_ARGB_4444_8u, Kind::kBytes, false, {1, 2, 3, 0}},
    {host::PrPixelFormat_BGRX_4444_8u, Kind::kBytes, false, {2, 1, 0, -1}},
    {host::PrPixelFormat_XRGB_4444_8u, Kind::kBytes, false, {1, 2, 3, -1}},
    {host::PrPixelFormat_VUYA_4444_8u, Kind::kBytes, true, {2, 1, 0, 3}},
    {host::PrPixelFormat_VUYA_4444_8u_709, Kind::kBytes, true, {2, 1, 0, 3}},
    {host::PrPixelFormat_VUYX_4444_8u, Kind::kBytes, true, {2, 1, 0, -1}},
    {host::PrPixelFormat_VUYX_4444_8u_709, Kind::kBytes, true, {2, 1, 0, -1}},
    {host::PrPixelFormat_BGRA_4444_16u, Kind::kWords, false, {2, 1, 0, 3}},
    {host::PrPixelFormat_ARGB_4444_16u, Kind::kWords, false, {1, 2, 3, 0}},
    {host::PrPixelFormat_BGRX_4444_16u, Kind::kWords, false, {2, 1, 0, -1}},
    {host::PrPixelFormat_XRGB_4444_16u, Kind::kWords, false, {1, 2, 3, -1}},
    {host::PrPixelFormat_YUYV_422_8u_601, Kind::kYuyv, true, {0, 1, 2, -1}},
    {host::PrPixelFormat_YUYV_422_8u_709, Kind::kYuyv, true, {0, 1, 2, -1}},
    {host::PrPixelFormat_UYVY_422_8u_601, Kind::kUyvy, true, {0, 1, 2, -1}},
    {host::PrPixelFormat_UYVY_422_8u_709, Kind::kUyvy, true, {0, 1, 2, -1}},
    {host::PrPixelFormat_V210_422_10u_601, Kind::kV210, true, {0, 1, 2, -1}},
    {host::PrPixelFormat_V210_422_10u_709, Kind::kV210, true, {0, 1, 2, -1}},
    {host::PrPixelFormat_RGB_444_10u, Kind::kRgb10, false, {0, 1, 2, -1}},
};

const Reader* findReader(std::uint32_t format) noexcept {
    const auto* found = std::ranges::find(kReaders, format, &Reader::format);
    return found == std::end(kReaders) ? nullptr : found;
}

// One pixel: R G B A or Y U V A, in the format's own numbers.
using Components = std::array<float, 4>;

std::uint32_t word(std::span<const std::uint8_t> row, std::size_t at) {
    std::uint32_t value = 0;
    std::memcpy(&value, row.data() + at, sizeof value);
    return value;
}

// Chroma stands at the even pixels: what lies between two of them is their mean.
void interpolateChroma(std::vector<Components>& pixels) {
    for (std::size_t x = 1; x < pixels.size(); x += 2) {
        const Components& left = pixels[x - 1];
        const Components& right = x + 1 < pixels.size() ? pixels[x + 1] : left;
        pixels[x][1] = (left[1] + right[1]) / 2.0F;
        pixels[x][2] = (left[2] + right[2]) / 2.0F;
    }
}

void readPacked(const Reader& reader, std::span<const std::uint8_t> row, std::vector<Components>& pixels) {
    const bool words = reader.kind == Kind::kWords;
    for (std::size_t x = 0; x < pixels.size(); ++x) {
        for (std::size_t c = 0; c < 4; ++c) {
            if (reader.places[c] < 0) {
                continue;
            }
            const std::size_t sample = 4 * x + static_cast<std::size_t>(reader.places[c]);
            if (words) {
                std::uint16_t value = 0;
                std::memcpy(&value, row.data() + 2 * sample, sizeof value);
                pixels[x][c] = value;
            } else {
                pixels[x][c] = row[sample];
            }
        }
    }
}

// Y0 U Y1 V, or U Y0 V Y1.
void read422(bool lumaFirst, std::span<const std::uint8_t> row, std::vector<Components>& pixels) {
    const std::size_t luma = lumaFirst ? 0 : 1;
    for (std::size_t x = 0; x < pixels.size(); ++x) {
        const std::uint8_t* group = row.data() + x / 2 * 4;
        pixels[x][0] = group[luma + x % 2 * 2];
        pixels[x][1] = group[1 - luma];
        pixels[x][2] = group[3 - luma];
    }
    interpolateChroma(pixels);
}

// Six pixels in four words of three samples of ten bits: U0 Y0 V0, Y1 U2 Y2, V2 Y3 U4, Y4 V4 Y5.
void readV210(std::span<const std::uint8_t> row, std::vector<Components>& pixels) {
    constexpr std::size_t kLuma[6] = {1, 3, 5, 7, 9, 11};
    constexpr std::size_t kU[3] = {0, 4, 8};
    constexpr std::size_t kV[3] = {2, 6, 10};
    for (std::size_t x = 0; x < pixels.size(); ++x) {
        const std::size_t group = x / 6 * 16;
        const auto sample = [&](std::size_t i) {
            return static_cast<float>(word(row, group + i / 3 * 4) >> (i % 3 * 10) & 0x3FF);
        };
        pixels[x][0] = sample(kLuma[x % 6]);
        pixels[x][1] = sample(kU[x % 6 / 2]);
        pixels[x][2] = sample(kV[x % 6 / 2]);
    }
    interpolateChroma(pixels);
}

// Ten bits each of red, green and blue from the top of a little-endian word.
void readRgb10(std::span<const std::uint8_t> row, std::vector<Components>& pixels) {
    for (std::size_t x = 0; x < pixels.size(); ++x) {
        const std::uint32_t value = word(row, 4 * x);
        pixels[x][0] = static_cast<float>(value >> 22);
        pixels[x][1] = static_cast<float>(value >> 12 & 0x3FF);
        pixels[x][2] = static_cast<float>(value >> 2 & 0x3FF);
    }
}

void readRow(const Reader& reader, std::span<const std::uint8_t> row, std::vector<Components>& pixels) {
    switch (reader.kind) {
        case Kind::kBytes:
        case Kind::kWords:
            readPacked(reader, row, pixels);
            break;
        case Kind::kYuyv:
            read422(true, row, pixels);
            break;
        case Kind::kUyvy:
            read422(false, row, pixels);
            break;
        case Kind::kV210:
            readV210(row, pixels);
            break;
        case Kind::kRgb10:
            readRgb10(row, pixels);
            break;
    }
}

// The largest number of a full-range component.
float fullScale(Kind kind) {
    switch (kind) {
        case Kind::kWords:
            return 32768.0F;
        case Kind::kRgb10:
        case Kind::kV210:
            return 1023.0F;
        default:
            return 255.0F;
    }
}

// Limited-range YUV to RGB of 0 to 1.
struct Matrix {
    float red;
    float blue;
    float unit;  // numbers of one 8-bit step: 1 for 8 bits, 4 for 10

    Components rgb(const Components& p) const {
        const float y = (p[0] - 16.0F * unit) / (219.0F * unit);
        const float u = (p[1] - 128.0F * unit) / (112.0F * unit);
        const float v = (p[2] - 128.0F * unit) / (112.0F * unit);
        const float r = y + (1.0F - red) * v;
        const float b = y + (1.0F - blue) * u;
        const float g = (y - red * r - blue * b) / (1.0F - red - blue);
        return {r, g, b, p[3]};
    }
};

Matrix matrixOf(const PixelLayout& layout, Kind kind) {
    const bool rec709 = std::string_view(layout.name).ends_with("_709");
    const float unit = kind == Kind::kV210 ? 4.0F : 1.0F;
    return rec709 ? Matrix{0.2126F, 0.0722F, unit} : Matrix{0.299F, 0.114F, unit};
}

}  // namespace

bool canShow(std::uint32_t pixelFormat) noexcept {
    return findReader(pixelFormat) != nullptr;
}

Picture toPicture(const Frame& frame, std::int32_t step) {
    const Reader& reader = *findReader(frame.pixelFormat());
    const bool deep =
        reader.kind == Kind::kWords || reader.kind == Kind::kRgb10 || reader.kind == Kind::kV210;
    Picture out;
    out.width = (frame.width() + step - 1) / step;
    out.height = (frame.height() + step - 1) / step;
    out.channels = reader.places[3] < 0 ? 3 : 4;
    out.bits = deep ? 16 : 8;
    const auto channels = static_cast<std::size_t>(out.channels);
    out.samples.resize(static_cast<std::size_t>(out.width) * static_cast<std::size_t>(out.height) * channels);

    const Matrix matrix = matrixOf(frame.layout(), reader.kind);
    const float scale = fullScale(reader.kind);
    const float most = deep ? 65535.0F : 255.0F;
    std::vector<Components> pixels(static_cast<std::size_t>(frame.width()));
    for (std::int32_t y = 0; y < out.height; ++y) {
        readRow(reader, frame.pictureRow(y * step), pixels);
        std::uint16_t* row = out.row(y);
        for (std::size_t x = 0; x < pixels.size(); x += static_cast<std::size_t>(step)) {
            const Components& pixel = pixels[x];
            Components rgb = reader.yuv ? matrix.rgb(pixel) : pixel;
            for (std::size_t c = 0; c < channels; ++c) {
                // YUV is on a scale of 0 to 1 now; alpha never was anything but full range.
                const float value = reader.yuv && c < 3 ? rgb[c] : rgb[c] / scale;
                *row++ = static_cast<std::uint16_t>(std::lround(std::clamp(value, 0.0F, 1.0F) * most));
            }
        }
    }
    return out;
}

}  // namespace simhost::tool
