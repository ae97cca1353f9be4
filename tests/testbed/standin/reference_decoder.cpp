#include "tests/testbed/standin/reference_decoder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>

namespace orvantis::standin::test {
namespace {

class Picture {
 public:
    Picture(const TestType& type, const std::vector<std::uint8_t>& payload, std::uint32_t width,
            std::uint32_t height)
        : m_type(type), m_payload(payload), m_width(width), m_height(height) {}

    unsigned bits() const { return m_type.bits; }
    double max() const { return std::pow(2.0, m_type.bits) - 1; }
    double depth() const { return std::pow(2.0, m_type.bits - 8.0); }
    std::uint32_t width() const { return m_width; }
    const TestType& type() const { return m_type; }

    std::uint32_t luma(std::uint32_t x, std::uint32_t y) const { return sample(0, m_width, x, y); }
    std::uint32_t green(std::uint32_t x, std::uint32_t y) const { return luma(x, y); }
    std::uint32_t blue(std::uint32_t x, std::uint32_t y) const { return chroma(0, x, y); }
    std::uint32_t red(std::uint32_t x, std::uint32_t y) const { return chroma(1, x, y); }

    // index 0 = U (or blue), 1 = V (or red)
    std::uint32_t chroma(unsigned index, std::uint32_t x, std::uint32_t y) const {
        if (m_type.model == Model::kGrey) {
            return m_type.bits == 8 ? 128 : 512;
        }
        const std::uint32_t width = (m_width + m_type.chromaStepX - 1) / m_type.chromaStepX;
        const std::uint32_t height = (m_height + m_type.chromaStepY - 1) / m_type.chromaStepY;
        const std::size_t start = std::size_t{m_width} * m_height + index * std::size_t{width} * height;
        return sample(start, width, x / m_type.chromaStepX, y / m_type.chromaStepY);
    }

    std::uint32_t alpha(std::uint32_t x, std::uint32_t y) const {
        return sample(3 * std::size_t{m_width} * m_height, m_width, x, y);
    }

 private:
    std::uint32_t sample(std::size_t start, std::uint32_t rowSamples, std::uint32_t x,
                         std::uint32_t y) const {
        const std::size_t index = start + std::size_t{y} * rowSamples + x;
        if (m_type.bits == 8) {
            return m_payload.at(index);
        }
        return m_payload.at(2 * index) + 256U * m_payload.at(2 * index + 1);
    }

    const TestType& m_type;
    const std::vector<std::uint8_t>& m_payload;
    std::uint32_t m_width;
    std::uint32_t m_height;
};

// Full range: the bits of the sample again and again for a deeper layout, in proportion for a shallower one.
double fullRange(const Picture& picture, std::uint32_t value, unsigned outBits, bool range0To32768) {
    if (range0To32768) {
        return value * 32768.0 / picture.max();
    }
    if (outBits < picture.bits()) {
        return value * (std::pow(2.0, outBits) - 1) / picture.max();
    }
    std::uint32_t result = 0;
    for (unsigned i = 0; i < outBits; ++i) {
        const unsigned bit = picture.bits() - 1 - i % picture.bits();
        result = result * 2 + (value >> bit) % 2;
    }
    return result;
}

double limitedRange(const Picture& picture, std::uint32_t value, unsigned outBits) {
    if (outBits == picture.bits()) {
        return value;
    }
    return outBits == 10 ? value * 4.0 : std::min(std::floor((value + 2.0) / 4.0), 255.0);
}

struct Pixel {
    double r, g, b, a;
};

Pixel rgbPixel(const Picture& picture, std::uint32_t x, std::uint32_t y, unsigned outBits,
               const ReferenceRequest& request) {
    const double white = request.range0To32768 ? 32768.0 : std::pow(2.0, outBits) - 1;
    const auto level = [&](std::uint32_t value) {
        return fullRange(picture, value, outBits, request.range0To32768);
    };
    Pixel pixel{0, 0, 0, white};
    if (picture.type().alpha) {
        pixel.a = level(picture.alpha(x, y));
    }
    if (picture.type().model == Model::kRgb) {
        pixel.r = level(picture.red(x, y));
        pixel.g = level(picture.green(x, y));
        pixel.b = level(picture.blue(x, y));
        return pixel;
    }
    const double s = picture.depth();
    const double luma = (picture.luma(x, y) - 16 * s) / (219 * s);
    const double cb = (picture.chroma(0, x, y) - 128 * s) / (224 * s);
    const double cr = (picture.chroma(1, x, y) - 128 * s) / (224 * s);
    const double kr = request.rec709 ? 0.2126 : 0.299;
    const double kb = request.rec709 ? 0.0722 : 0.114;
    const double r = luma + 2 * (1 - kr) * cr;
    const double b = luma + 2 * (1 - kb) * cb;
    const double g = (luma - kr * r - kb * b) / (1 - kr - kb);
    pixel.r = std::clamp(r, 0.0, 1.0) * white;
    pixel.g = std::clamp(g, 0.0, 1.0) * white;
    pixel.b = std::clamp(b, 0.0, 1.0) * white;
    return pixel;
}

class Row {
 public:
    void add(unsigned bitCount, double exact) {
        m_fields.push_back({m_bits, bitCount, exact});
        m_bits += bitCount;
    }
    std::vector<Field> take() { return std::move(m_fields); }

 private:
    std::vector<Field> m_fields;
    std::size_t m_bits = 0;
};

void addRgb(Row& row, const Picture& picture, std::uint32_t y, const ReferenceRequest& request) {
    const bool deep = request.layout == 31 || request.layout == 32;
    const unsigned bits = deep ? 16 : (request.layout == 15 ? 10 : 8);
    const double white = request.range0To32768 ? 32768.0 : std::pow(2.0, bits) - 1;
    for (std::uint32_t x = 0; x < picture.width(); ++x) {
        const Pixel p = rgbPixel(picture, x, y, bits, request);
        switch (request.layout) {
            case 1:   // BGRX
            case 32:  // the same in 16 bits
                for (const double value : {p.b, p.g, p.r, white}) {
                    row.add(bits, value);
                }
                break;
            case 2:   // BGRA
            case 31:  // the same in 16 bits
                for (const double value : {p.b, p.g, p.r, p.a}) {
                    row.add(bits, value);
                }
                break;
            case 16:  // XRGB
                for (const double value : {white, p.r, p.g, p.b}) {
                    row.add(bits, value);
                }
                break;
            case 19:  // ARGB
                for (const double value : {p.a, p.r, p.g, p.b}) {
                    row.add(bits, value);
                }
                break;
            case 15:  // from the lowest bit: two zero bits, blue, green, red
                row.add(2, 0);
                for (const double value : {p.b, p.g, p.r}) {
                    row.add(bits, value);
                }
                break;
            default:
                throw std::logic_error("no RGB layout");
        }
    }
}

void addPairs(Row& row, const Picture& picture, std::uint32_t y, bool chromaFirst) {
    for (std::uint32_t x = 0; x < picture.width(); x += 2) {
        const std::uint32_t second = x + 1 < picture.width() ? x + 1 : x;
        const double y0 = limitedRange(picture, picture.luma(x, y), 8);
        const double y1 = limitedRange(picture, picture.luma(second, y), 8);
        const double u = limitedRange(picture, picture.chroma(0, x, y), 8);
        const double v = limitedRange(picture, picture.chroma(1, x, y), 8);
        const std::array<double, 4> yuyv = {y0, u, y1, v};
        const std::array<double, 4> uyvy = {u, y0, v, y1};
        for (const double value : chromaFirst ? uyvy : yuyv) {
            row.add(8, value);
        }
    }
}

void addV210(Row& row, const Picture& picture, std::uint32_t y) {
    for (std::uint32_t x = 0; x < picture.width(); x += 6) {
        // The samples of a group in the order of the words: U0 Y0 V0, Y1 U1 Y2, V1 Y3 U2, Y4 V2 Y5.
        const char* const order = "U0Y0V0Y1U1Y2V1Y3U2Y4V2Y5";
        for (unsigned i = 0; i < 12; ++i) {
            const char kind = order[2 * i];
            const auto number = static_cast<std::uint32_t>(order[2 * i + 1] - '0');
            std::uint32_t at = x + (kind == 'Y' ? number : 2 * number);
            double value = 0;
            const bool inLastPair = at < picture.width() + picture.width() % 2;
            if (inLastPair) {
                at = std::min(at, picture.width() - 1);
                value = limitedRange(
                    picture, kind == 'Y' ? picture.luma(at, y) : picture.chroma(kind == 'V', at, y), 10);
            }
            row.add(10, value);
            if (i % 3 == 2) {
                row.add(2, 0);
            }
        }
    }
}

void addYuv444(Row& row, const Picture& picture, std::uint32_t y, bool withAlpha) {
    for (std::uint32_t x = 0; x < picture.width(); ++x) {
        row.add(8, limitedRange(picture, picture.chroma(1, x, y), 8));
        row.add(8, limitedRange(picture, picture.chroma(0, x, y), 8));
        row.add(8, limitedRange(picture, picture.luma(x, y), 8));
        row.add(8,
                withAlpha && picture.type().alpha ? fullRange(picture, picture.alpha(x, y), 8, false) : 255);
    }
}

}  // namespace

std::size_t referenceRowBytes(std::uint32_t layout, std::uint32_t width) {
    switch (layout) {
        case 4:
        case 5:
            return (std::size_t{width} + 1) / 2 * 4;
        case 11:
            return (std::size_t{width} + 5) / 6 * 16;
        case 31:
        case 32:
            return std::size_t{width} * 8;
        default:
            return std::size_t{width} * 4;
    }
}

std::vector<Field> referenceRow(const TestType& type, const std::vector<std::uint8_t>& payload,
                                std::uint32_t width, std::uint32_t height, std::uint32_t y,
                                const ReferenceRequest& request) {
    const Picture picture(type, payload, width, height);
    Row row;
    switch (request.layout) {
        case 4:
            addPairs(row, picture, y, false);
            break;
        case 5:
            addPairs(row, picture, y, true);
            break;
        case 11:
            addV210(row, picture, y);
            break;
        case 49:
            addYuv444(row, picture, y, false);
            break;
        case 50:
            addYuv444(row, picture, y, true);
            break;
        default:
            addRgb(row, picture, y, request);
            break;
    }
    return row.take();
}

std::string firstDifference(const std::vector<Field>& expected, const std::uint8_t* row,
                            std::size_t rowBytes) {
    // Halves may go either way in floating point; everything else is rounded to the nearest.
    constexpr double kTolerance = 0.5 + 1e-3;
    std::size_t bits = 0;
    for (const Field& field : expected) {
        std::uint32_t actual = 0;
        for (unsigned i = 0; i < field.bitCount; ++i) {
            const std::size_t bit = field.bitOffset + i;
            actual |= (row[bit / 8] >> (bit % 8) & 1U) << i;
        }
        if (std::abs(actual - field.exact) > kTolerance) {
            return "bit " + std::to_string(field.bitOffset) + ": " + std::to_string(actual) + " instead of " +
                   std::to_string(field.exact);
        }
        bits += field.bitCount;
    }
    return bits == 8 * rowBytes ? std::string() : "the fields cover " + std::to_string(bits) + " bits";
}

}  // namespace orvantis::standin::test
