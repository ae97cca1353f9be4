#include "standin/row_packers.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "video/orvantis_type_codes.h"

namespace orvantis::standin {
namespace {

static_assert(std::endian::native == std::endian::little,
              "payload words and packed pixels are little-endian");

// ---- reading samples ----

// The payload has no alignment, hence the copy.
template <class Sample>
std::uint32_t sampleAt(const std::uint8_t* row, std::uint32_t index, const RowContext& context) {
    Sample sample;
    std::memcpy(&sample, row + std::size_t{index} * sizeof(Sample), sizeof(Sample));
    if constexpr (sizeof(Sample) == 1) {
        return sample;
    } else {
        return std::min<std::uint32_t>(sample, context.maxSample);
    }
}

template <class Sample>
std::uint32_t alphaAt(const PlaneRows& rows, std::uint32_t x, const RowContext& context) {
    const std::uint8_t* row = rows[kAlphaPlane];
    return row == nullptr ? context.opaque : context.alphaLevels[sampleAt<Sample>(row, x, context)];
}

template <class Sample>
struct RgbPixel {
    static Rgba at(const PlaneRows& rows, std::uint32_t x, const RowContext& context) {
        const std::uint16_t* levels = context.colorLevels;
        return {levels[sampleAt<Sample>(rows[2], x, context)], levels[sampleAt<Sample>(rows[0], x, context)],
                levels[sampleAt<Sample>(rows[1], x, context)], alphaAt<Sample>(rows, x, context)};
    }
};

// Chroma of subsampled pictures is the nearest sample to the left and above.
template <class Sample>
struct YuvPixelAsRgb {
    static Rgba at(const PlaneRows& rows, std::uint32_t x, const RowContext& context) {
        const std::uint32_t chromaX = x >> context.chromaShiftX;
        const std::uint32_t y = sampleAt<Sample>(rows[0], x, context);
        const std::uint32_t u =
            rows[1] == nullptr ? context.neutralChroma : sampleAt<Sample>(rows[1], chromaX, context);
        const std::uint32_t v =
            rows[2] == nullptr ? context.neutralChroma : sampleAt<Sample>(rows[2], chromaX, context);
        Rgba pixel = context.matrix.convert(y, u, v);
        pixel.a = alphaAt<Sample>(rows, x, context);
        return pixel;
    }
};

// Luma and chroma of a row in the depth of the layout.
template <class Sample>
struct YuvRow {
    PlaneRows rows;
    RowContext context;

    std::uint32_t luma(std::uint32_t x) const {
        // The second pixel of the last pair of an odd width is the last pixel again.
        return context.colorLevels[sampleAt<Sample>(rows[0], std::min(x, context.width - 1), context)];
    }
    std::uint32_t chroma(unsigned plane, std::uint32_t index) const {
        const std::uint8_t* row = rows[plane];
        return context
            .colorLevels[row == nullptr ? context.neutralChroma : sampleAt<Sample>(row, index, context)];
    }
};

// ---- writing pixels ----

void putBytes(std::uint8_t* out, std::uint32_t b0, std::uint32_t b1, std::uint32_t b2, std::uint32_t b3) {
    out[0] = static_cast<std::uint8_t>(b0);
    out[1] = static_cast<std::uint8_t>(b1);
    out[2] = static_cast<std::uint8_t>(b2);
    out[3] = static_cast<std::uint8_t>(b3);
}

void putWord(std::uint8_t* out, std::uint32_t word) {
    std::memcpy(out, &word, sizeof(word));
}

void putSamples16(std::uint8_t* out, std::uint32_t s0, std::uint32_t s1, std::uint32_t s2, std::uint32_t s3) {
    const std::uint16_t samples[] = {static_cast<std::uint16_t>(s0), static_cast<std::uint16_t>(s1),
                                     static_cast<std::uint16_t>(s2), static_cast<std::uint16_t>(s3)};
    std::memcpy(out, samples, sizeof(samples));
}

// A layout's unused fourth component is opaque, so that a reader that takes it for alpha sees the picture.
struct PutBgra {
    static constexpr std::size_t kBytes = 4;
    static void put(std::uint8_t* out, const Rgba& p, std::uint32_t) { putBytes(out, p.b, p.g, p.r, p.a); }
};
struct PutBgrx {
    static constexpr std::size_t kBytes = 4;
    static void put(std::uint8_t* out, const Rgba& p, std::uint32_t opaque) {
        putBytes(out, p.b, p.g, p.r, opaque);
    }
};
struct PutArgb {
    static constexpr std::size_t kBytes = 4;
    static void put(std::uint8_t* out, const Rgba& p, std::uint32_t) { putBytes(out, p.a, p.r, p.g, p.b); }
};
struct PutXrgb {
    static constexpr std::size_t kBytes = 4;
    static void put(std::uint8_t* out, const Rgba& p, std::uint32_t opaque) {
        putBytes(out, opaque, p.r, p.g, p.b);
    }
};
// A little-endian word: red in the bits 31 to 22, green 21 to 12, blue 11 to 2, the lowest two 0.
struct PutRgb10 {
    static constexpr std::size_t kBytes = 4;
    static void put(std::uint8_t* out, const Rgba& p, std::uint32_t) {
        putWord(out, p.r << 22 | p.g << 12 | p.b << 2);
    }
};
struct PutBgra16 {
    static constexpr std::size_t kBytes = 8;
    static void put(std::uint8_t* out, const Rgba& p, std::uint32_t) {
        putSamples16(out, p.b, p.g, p.r, p.a);
    }
};
struct PutBgrx16 {
    static constexpr std::size_t kBytes = 8;
    static void put(std::uint8_t* out, const Rgba& p, std::uint32_t opaque) {
        putSamples16(out, p.b, p.g, p.r, opaque);
    }
};

// ---- rows ----
//
// Each row works on copies of its arguments: the compiler must assume that bytes written through `out` could
// be theirs, and would read them again for every pixel.

template <class Pixel, class Put>
void packRgb(const PlaneRows& planeRows, const RowContext& rowContext, std::uint8_t* out) noexcept {
    const PlaneRows rows = planeRows;
    const RowContext context = rowContext;
    for (std::uint32_t x = 0; x < context.width; ++x, out += Put::kBytes) {
        Put::put(out, Pixel::at(rows, x, context), context.opaque);
    }
}

template <class Sample>
void packYuyv(const PlaneRows& rows, const RowContext& context, std::uint8_t* out) noexcept {
    const YuvRow<Sample> row{rows, context};
    for (std::uint32_t x = 0; x < row.context.width; x += 2, out += 4) {
        putBytes(out, row.luma(x), row.chroma(1, x / 2), row.luma(x + 1), row.chroma(2, x / 2));
    }
}

template <class Sample>
void packUyvy(const PlaneRows& rows, const RowContext& context, std::uint8_t* out) noexcept {
    const YuvRow<Sample> row{rows, context};
    for (std::uint32_t x = 0; x < row.context.width; x += 2, out += 4) {
        putBytes(out, row.chroma(1, x / 2), row.luma(x), row.chroma(2, x / 2), row.luma(x + 1));
    }
}

// Byte order V U Y A; an opaque fourth byte where the layout or the coded type has no alpha.
template <class Sample>
void packVuya(const PlaneRows& rows, const RowContext& context, std::uint8_t* out) noexcept {
    const YuvRow<Sample> row{rows, context};
    for (std::uint32_t x = 0; x < row.context.width; ++x, out += 4) {
        putBytes(out, row.chroma(2, x), row.chroma(1, x), row.luma(x),
                 alphaAt<Sample>(row.rows, x, row.context));
    }
}

template <class Sample>
void packVuyx(const PlaneRows& rows, const RowContext& context, std::uint8_t* out) noexcept {
    const YuvRow<Sample> row{rows, context};
    for (std::uint32_t x = 0; x < row.context.width; ++x, out += 4) {
        putBytes(out, row.chroma(2, x), row.chroma(1, x), row.luma(x), row.context.opaque);
    }
}

// Six pixels in four words of three 10-bit samples, lowest bits first: U0 Y0 V0 | Y1 U1 Y2 | V1 Y3 U2 | Y4 V2
// Y5. Pairs behind the last one of a row are 0.
template <class Sample>
void packV210(const PlaneRows& rows, const RowContext& context, std::uint8_t* out) noexcept {
    const YuvRow<Sample> row{rows, context};
    const std::uint32_t pairs = row.context.width / 2 + row.context.width % 2;
    for (std::uint32_t pair = 0; pair < pairs; pair += 3, out += 16) {
        std::uint32_t y[6] = {};
        std::uint32_t u[3] = {};
        std::uint32_t v[3] = {};
        const std::uint32_t present = std::min<std::uint32_t>(pairs - pair, 3);
        for (std::uint32_t i = 0; i < present; ++i) {
            y[2 * i] = row.luma(2 * (pair + i));
            y[2 * i + 1] = row.luma(2 * (pair + i) + 1);
            u[i] = row.chroma(1, pair + i);
            v[i] = row.chroma(2, pair + i);
        }
        putWord(out, u[0] | y[0] << 10 | v[0] << 20);
        putWord(out + 4, y[1] | u[1] << 10 | y[2] << 20);
        putWord(out + 8, v[1] | y[3] << 10 | u[2] << 20);
        putWord(out + 12, y[4] | v[2] << 10 | y[5] << 20);
    }
}

template <class Pixel>
RowPacker rgbPacker(std::uint32_t type) noexcept {
    switch (type) {
        case kOrvantisOutBgra:
            return packRgb<Pixel, PutBgra>;
        case kOrvantisOutBgrx:
            return packRgb<Pixel, PutBgrx>;
        case kOrvantisOutArgb:
            return packRgb<Pixel, PutArgb>;
        case kOrvantisOutXrgb:
            return packRgb<Pixel, PutXrgb>;
        case kOrvantisOutRgb10:
            return packRgb<Pixel, PutRgb10>;
        case kOrvantisOutBgra16:
            return packRgb<Pixel, PutBgra16>;
        case kOrvantisOutBgrx16:
            return packRgb<Pixel, PutBgrx16>;
        default:
            return nullptr;
    }
}

template <class Sample>
RowPacker yuvPacker(std::uint32_t type) noexcept {
    switch (type) {
        case kOrvantisOutYuyv:
            return packYuyv<Sample>;
        case kOrvantisOutUyvy:
            return packUyvy<Sample>;
        case kOrvantisOutV210:
            return packV210<Sample>;
        case kOrvantisOutVuya:
            return packVuya<Sample>;
        case kOrvantisOutVuyx:
            return packVuyx<Sample>;
        default:
            return nullptr;
    }
}

template <class Sample>
RowPacker packerFor(const CodedType& coded, const OutputLayout& layout) noexcept {
    if (layout.kind != LayoutKind::kRgb) {
        return yuvPacker<Sample>(layout.type);
    }
    return coded.isRgb() ? rgbPacker<RgbPixel<Sample>>(layout.type)
                         : rgbPacker<YuvPixelAsRgb<Sample>>(layout.type);
}

}  // namespace

RowPacker rowPacker(const CodedType& coded, const OutputLayout& layout) noexcept {
    return coded.bytesPerSample() == 1 ? packerFor<std::uint8_t>(coded, layout)
                                       : packerFor<std::uint16_t>(coded, layout);
}

}  // namespace orvantis::standin
