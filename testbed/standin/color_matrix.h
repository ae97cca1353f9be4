// Limited-range YUV to full-range RGB.
//
// Called by: the conversion plan (once a decompression) and the row packers (once a pixel). Pure; any thread.

#pragma once

#include <cstdint>

namespace orvantis::standin {

struct Rgba {
    std::uint32_t r = 0;
    std::uint32_t g = 0;
    std::uint32_t b = 0;
    std::uint32_t a = 0;
};

// The exact result of
//     R = M x ((Y - 16 s) / (219 s) + 2 (1 - Kr)      x (V - 128 s) / (224 s))
//     G = M x ((Y - 16 s) / (219 s) - 2 (1 - Kb) Kb / Kg x (U - 128 s) / (224 s)
//                                   - 2 (1 - Kr) Kr / Kg x (V - 128 s) / (224 s))
//     B = M x ((Y - 16 s) / (219 s) + 2 (1 - Kb)      x (U - 128 s) / (224 s))
// with s = 2^(bits - 8), rounded to the nearest integer (in fixed point with 24 binary places) and kept in
// 0..M. Kr, Kg, Kb are 0.299, 0.587, 0.114 for Rec.601 and 0.2126, 0.7152, 0.0722 for Rec.709.
class ColorMatrix {
 public:
    ColorMatrix() = default;
    // `colorSpace` is one of kOrvantisColorSpace..., `bits` the depth of the samples, `maxLevel` is M.
    ColorMatrix(std::uint32_t colorSpace, unsigned bits, std::uint32_t maxLevel) noexcept;

    // Alpha is left 0.
    Rgba convert(std::uint32_t y, std::uint32_t u, std::uint32_t v) const noexcept {
        const std::int64_t luma = m_luma * (static_cast<std::int64_t>(y) - m_lumaBlack) + kHalf;
        const std::int64_t cb = static_cast<std::int64_t>(u) - m_chromaZero;
        const std::int64_t cr = static_cast<std::int64_t>(v) - m_chromaZero;
        return {level(luma + m_redV * cr), level(luma - m_greenU * cb - m_greenV * cr),
                level(luma + m_blueU * cb), 0};
    }

 private:
    static constexpr unsigned kFractionBits = 24;
    static constexpr std::int64_t kHalf = std::int64_t{1} << (kFractionBits - 1);

    std::uint32_t level(std::int64_t sum) const noexcept {
        const std::int64_t value = sum >> kFractionBits;
        return static_cast<std::uint32_t>(value < 0 ? 0 : (value > m_maxLevel ? m_maxLevel : value));
    }

    std::int64_t m_luma = 0;
    std::int64_t m_redV = 0;
    std::int64_t m_greenU = 0;
    std::int64_t m_greenV = 0;
    std::int64_t m_blueU = 0;
    std::int64_t m_lumaBlack = 0;
    std::int64_t m_chromaZero = 0;
    std::int64_t m_maxLevel = 0;
};

}  // namespace orvantis::standin
