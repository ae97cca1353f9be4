// The vocabulary of video formats: what a file can contain (SubTypeInfos) and what the host can be given
// (FormatInfos). Process-wide, built at imInit before any file is opened, read from any thread. A row that
// was handed out never changes and lives as long as the plug-in is loaded.
#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <vector>

#include "host/std_parms.h"
#include "video/orvantis_codec.h"

namespace orvantis {

enum ColorModel : std::uint32_t { kModelRgb = 0, kModelRgba = 1, kModelYuv = 2, kModelYuva = 3 };

struct SubTypeInfo {
    std::uint32_t subType;        ///< four characters, the first in the highest byte
    const char16_t* subTypeName;  ///< display name
    std::uint32_t orvTypeComp;    ///< the codec library's code of the coded video
    // Kept so that a row describes its type whole; decoding leaves both to the library.
    std::uint32_t subsamplingH;                       ///< luma columns for one chroma column
    std::uint32_t subsamplingV;                       ///< luma rows for one chroma row
    std::uint32_t colorModel;                         ///< ColorModel
    std::span<const std::uint32_t> preferredFormats;  ///< host pixel formats; empty: no preference
};

enum FormatFlags : std::uint32_t { kIsAdobe16u = 1, kIsTopLeft = 2, kIsLimitedRange = 4 };

struct FormatInfo {
    std::uint32_t pixelFormat;  ///< host pixel format
    const char* name;           ///< display name
    std::uint32_t orvType;      ///< the codec library's code of the layout
    std::uint32_t colorSpace;   ///< 1 Rec.601, 2 Rec.709
    std::uint32_t flags;        ///< FormatFlags; kIsTopLeft comes from the host

    bool isAdobe16u() const noexcept { return (flags & kIsAdobe16u) != 0; }
    bool isTopLeft() const noexcept { return (flags & kIsTopLeft) != 0; }
    bool isLimitedRange() const noexcept { return (flags & kIsLimitedRange) != 0; }
};

/// Fills both tables and asks the host which formats are stored top row first. Throws std::runtime_error when
/// the image processing suite is refused; what was in force before stays. Host thread of imInit; a second
/// build comes into force as a whole, while other threads may be reading.
void buildFormatTables(const host::SPBasicSuite* basicSuite);

std::span<const SubTypeInfo> SubTypeInfos() noexcept;  // NOLINT(readability-identifier-naming)
std::span<const FormatInfo> FormatInfos() noexcept;    // NOLINT(readability-identifier-naming)

/// The coded type of a video that no row of SubTypeInfos has.
class UnknownCodedType : public std::runtime_error {
 public:
    explicit UnknownCodedType(std::uint32_t codedType);

    std::uint32_t type;
};

/// The first row with this type. Throws UnknownCodedType when there is none.
const SubTypeInfo& GetSubTypeInfo_by_orvTypeComp(std::uint32_t type);
/// The first row with this format. Throws std::runtime_error, naming it, when there is none.
const FormatInfo& GetFormatInfo_by_pixelFormat(std::uint32_t pixelFormat);

}  // namespace orvantis
