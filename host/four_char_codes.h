// Four-character codes whose first character stands in the highest byte: the file type, the sub-type codes
// and the code of the importer resource. Pixel formats use the opposite order, see host/pixel_formats.h; the
// two must not be mixed.

#pragma once

#include <cstdint>

namespace host {

// The code with its first character in the highest byte.
constexpr std::uint32_t fourccHighFirst(char c0, char c1, char c2, char c3) noexcept {
    return (static_cast<std::uint32_t>(static_cast<unsigned char>(c0)) << 24) |
           (static_cast<std::uint32_t>(static_cast<unsigned char>(c1)) << 16) |
           (static_cast<std::uint32_t>(static_cast<unsigned char>(c2)) << 8) |
           static_cast<std::uint32_t>(static_cast<unsigned char>(c3));
}

// The one file type that the importer announces.
inline constexpr std::uint32_t kFileTypeAviv = fourccHighFirst('A', 'V', 'I', 'V');
static_assert(kFileTypeAviv == 0x41564956u);

}  // namespace host
