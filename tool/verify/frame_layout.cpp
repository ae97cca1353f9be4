#include "tool/verify/frame_layout.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <span>

#include "host/pixel_formats.h"

namespace simhost::tool {
namespace {

struct Coded {
    std::string_view type;
    const char* name;
    unsigned planes;
    bool rgb;
    unsigned bits;
    unsigned shiftX;
    unsigned shiftY;
};
constexpr Coded kCoded[] = {
    {"O8RG", "gbrp", 3, true, 8, 0, 0},          {"O8RA", "gbrap", 4, true, 8, 0, 0},
    {"O8Y4", "yuv444p", 3, false, 8, 0, 0},      {"O8YA", "yuva444p", 4, false, 8, 0, 0},
    {"O8Y2", "yuv422p", 3, false, 8, 1, 0},      {"O8Y0", "yuv420p", 3, false, 8, 1, 1},
    {"O8G0", "gray", 1, false, 8, 0, 0},         {"O0RG", "gbrp10le", 3, true, 10, 0, 0},
    {"O0RA", "gbrap10le", 4, true, 10, 0, 0},    {"O0Y2", "yuv422p10le", 3, false, 10, 1, 0},
    {"O0Y0", "yuv420p10le", 3, false, 10, 1, 1}, {"O0G0", "gray10le", 1, false, 10, 0, 0},
    {"O2RG", "gbrp12le", 3, true, 12, 0, 0},     {"O2RA", "gbrap12le", 4, true, 12, 0, 0},
    {"O4RG", "gbrp14le", 3, true, 14, 0, 0},     {"O4RA", "gbrap14le", 4, true, 14, 0, 0},
};

// The host's formats that hold such a picture whole.
std::vector<std::uint32_t> wholeFormats(const Coded& coded) {
    using namespace host;
    if (coded.rgb) {
        return coded.bits == 8 ? std::vector<std::uint32_t>{PrPixelFormat_BGRA_4444_8u}
                               : std::vector<std::uint32_t>{PrPixelFormat_BGRA_4444_16u};
    }
    if (coded.bits == 10) {
        return {PrPixelFormat_V210_422_10u_601, PrPixelFormat_V210_422_10u_709};
    }
    if (coded.planes == 4) {
        return {PrPixelFormat_VUYA_4444_8u, PrPixelFormat_VUYA_4444_8u_709};
    }
    if (coded.planes == 3 && coded.shiftX == 0) {
        return {PrPixelFormat_VUYX_4444_8u, PrPixelFormat_VUYX_4444_8u_709, PrPixelFormat_VUYA_4444_8u,
                PrPixelFormat_VUYA_4444_8u_709};
    }
    return {PrPixelFormat_YUYV_422_8u_601, PrPixelFormat_YUYV_422_8u_709};
}

// A frame in the making: planes one behind the other.
class Planes {
 public:
    Planes(const FrameLayout& layout, std::int32_t width, std::int32_t height, std::vector<std::uint8_t>& out)
        : m_layout(layout), m_sampleBytes(layout.bits > 8 ? 2 : 1) {
        std::size_t at = 0;
        for (unsigned plane = 0; plane < layout.planes; ++plane) {
            const bool chroma = !layout.rgb && (plane == 1 || plane == 2);
            const unsigned x = chroma ? layout.shiftX : 0;
            const unsigned y = chroma ? layout.shiftY : 0;
            m_offsets[plane] = at;
            m_rowBytes[plane] = shiftedUp(width, x) * m_sampleBytes;
            at += m_rowBytes[plane] * shiftedUp(height, y);
        }
        out.assign(at, 0);
        m_bytes = out.data();
    }

    std::uint8_t* row(unsigned plane, std::int32_t y) const {
        return m_bytes + m_offsets[plane] + m_rowBytes[plane] * static_cast<std::size_t>(y);
    }
    bool hasChromaOf(std::int32_t y) const {
        return m_layout.planes > 1 && (y & ((1 << m_layout.shiftY) - 1)) == 0;
    }
    std::int32_t chromaRow(std::int32_t y) const { return y >> m_layout.shiftY; }

 private:
    static std::size_t shiftedUp(std::int32_t size, unsigned shift) {
        return (static_cast<std::size_t>(size) + (1U << shift) - 1) >> shift;
    }

    const FrameLayout& m_layout;
    std::size_t m_sampleBytes;
    std::array<std::size_t, 4> m_offsets{};
    std::array<std::size_t, 4> m_rowBytes{};
    std::uint8_t* m_bytes = nullptr;
};

void put16(std::uint8_t* at, unsigned value) {
    at[0] = static_cast<std::uint8_t>(value);
    at[1] = static_cast<std::uint8_t>(value >> 8);
}

// B G R A bytes to planes G B R (A); V U Y A bytes to Y U V (A).
void splitBytes(std::span<const std::uint8_t> row, const FrameLayout& layout, const Planes& planes,
                std::int32_t y) {
    static constexpr std::array<std::size_t, 4> kRgb = {1, 0, 2, 3};
    static constexpr std::array<std::size_t, 4> kYuv = {2, 1, 0, 3};
    const auto& places = layout.rgb ? kRgb : kYuv;
    for (unsigned plane = 0; plane < layout.planes; ++plane) {
        std::uint8_t* to = planes.row(plane, y);
        const std::uint8_t* from = row.data() + places[plane];
        for (std::size_t x = 0; x < row.size() / 4; ++x) {
            to[x] = from[4 * x];
        }
    }
}

// The same of 16-bit words whose white is 32768. The way there is exact: a sample of so many bits comes back
// by rounding.
void splitWords(std::span<const std::uint8_t> row, const FrameLayout& layout, const Planes& planes,
                std::int32_t y) {
    static constexpr std::array<std::size_t, 4> kPlaces = {1, 0, 2, 3};
    const unsigned most = (1U << layout.bits) - 1;
    for (unsigned plane = 0; plane < layout.planes; ++plane) {
        std::uint8_t* to = planes.row(plane, y);
        const std::uint8_t* from = row.data() + 2 * kPlaces[plane];
        for (std::size_t x = 0; x < row.size() / 8; ++x) {
            const unsigned word = from[8 * x] + 256U * from[8 * x + 1];
            put16(to + 2 * x, (word * most + 16384) / 32768);
        }
    }
}

// Y0 U Y1 V; the last pair of an odd width has a luma too many.
void splitYuyv(std::span<const std::uint8_t> row, std::int32_t width, const Planes& planes, std::int32_t y) {
    std::uint8_t* luma = planes.row(0, y);
    for (std::size_t x = 0; x < static_cast<std::size_t>(width); ++x) {
        luma[x] = row[2 * x];
    }
    if (!planes.hasChromaOf(y)) {
        return;
    }
    std::uint8_t* u = planes.row(1, planes.chromaRow(y));
    std::uint8_t* v = planes.row(2, planes.chromaRow(y));
    for (std::size_t pair = 0; pair < (static_cast<std::size_t>(width) + 1) / 2; ++pair) {
        u[pair] = row[4 * pair + 1];
        v[pair] = row[4 * pair + 3];
    }
}

// Six pixels in four words of three samples of ten bits: U0 Y0 V0, Y1 U2 Y2, V2 Y3 U4, Y4 V4 Y5.
void splitV210(std::span<const std::uint8_t> row, std::int32_t width, const Planes& planes, std::int32_t y) {
    constexpr std::size_t kLuma[6] = {1, 3, 5, 7, 9, 11};
    constexpr std::size_t kU[3] = {0, 4, 8};
    constexpr std::size_t kV[3] = {2, 6, 10};
    const auto sample = [row](std::size_t group, std::size_t i) {
        std::uint32_t word = 0;
        std::memcpy(&word, row.data() + group * 16 + i / 3 * 4, sizeof word);
        return word >> (i % 3 * 10) & 0x3FF;
    };
    std::uint8_t* luma = planes.row(0, y);
    for (std::size_t x = 0; x < static_cast<std::size_t>(width); ++x) {
        put16(luma + 2 * x, sample(x / 6, kLuma[x % 6]));
    }
    if (!planes.hasChromaOf(y)) {
        return;
    }
    std::uint8_t* u = planes.row(1, planes.chromaRow(y));
    std::uint8_t* v = planes.row(2, planes.chromaRow(y));
    for (std::size_t pair = 0; pair < (static_cast<std::size_t>(width) + 1) / 2; ++pair) {
        put16(u + 2 * pair, sample(pair / 3, kU[pair % 3]));
        put16(v + 2 * pair, sample(pair / 3, kV[pair % 3]));
    }
}

}  // namespace

FrameLayout frameLayout(std::string_view codedType, const std::vector<std::uint32_t>& offered) {
    FrameLayout out;
    const auto* coded = std::ranges::find(kCoded, codedType, &Coded::type);
    if (coded != std::end(kCoded)) {
        for (const std::uint32_t format : wholeFormats(*coded)) {
            if (std::ranges::find(offered, format) != offered.end()) {
                return {coded->name, format,      false,         coded->planes,
                        coded->rgb,  coded->bits, coded->shiftX, coded->shiftY};
            }
        }
    }
    // What holds most of it.
    const auto deep = std::ranges::find(offered, host::PrPixelFormat_BGRA_4444_16u);
    out.delivered = deep != offered.end() ? *deep : offered.front();
    out.asDelivered = true;
    out.name = host::pixelFormatName(out.delivered);
    return out;
}

void layOut(const Frame& frame, const FrameLayout& layout, std::vector<std::uint8_t>& out) {
    if (layout.asDelivered) {
        out = frame.picture();
        return;
    }
    const Planes planes(layout, frame.width(), frame.height(), out);
    const bool words = layout.rgb && layout.bits > 8;
    const bool pairs = !layout.rgb && (layout.shiftX > 0 || layout.planes == 1);
    for (std::int32_t y = 0; y < frame.height(); ++y) {
        const auto row = frame.pictureRow(y);
        if (words) {
            splitWords(row, layout, planes, y);
        } else if (!pairs) {
            splitBytes(row, layout, planes, y);
        } else if (layout.bits > 8) {
            splitV210(row, frame.width(), planes, y);
        } else {
            splitYuyv(row, frame.width(), planes, y);
        }
    }
}

}  // namespace simhost::tool
