#include "standin/color_matrix.h"

#include <cmath>

#include "video/orvantis_common64.h"

namespace orvantis::standin {

ColorMatrix::ColorMatrix(std::uint32_t colorSpace, unsigned bits, std::uint32_t maxLevel) noexcept
    : m_lumaBlack(std::int64_t{16} << (bits - 8)),
      m_chromaZero(std::int64_t{128} << (bits - 8)),
      m_maxLevel(maxLevel) {
    const bool rec601 = colorSpace == kOrvantisColorSpaceRec601;
    const double kr = rec601 ? 0.299 : 0.2126;
    const double kb = rec601 ? 0.114 : 0.0722;
    const double kg = 1.0 - kr - kb;
    const double depth = std::ldexp(1.0, static_cast<int>(bits) - 8);
    const double one = std::ldexp(static_cast<double>(maxLevel), static_cast<int>(kFractionBits));
    const double chroma = one / (224.0 * depth);
    m_luma = std::llround(one / (219.0 * depth));
    m_redV = std::llround(2.0 * (1.0 - kr) * chroma);
    m_greenU = std::llround(2.0 * (1.0 - kb) * kb / kg * chroma);
    m_greenV = std::llround(2.0 * (1.0 - kr) * kr / kg * chroma);
    m_blueU = std::llround(2.0 * (1.0 - kb) * chroma);
}

}  // namespace orvantis::standin
