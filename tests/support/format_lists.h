// What the tests hold the project's tables against: the host's pixel formats, the formats that are delivered
// and the coded types, written down once more and from no table under test. A new format or type has its row
// here, and every test that goes through all of them follows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <ostream>
#include <span>
#include <string>
#include <vector>

namespace formatlists {

struct HostFormat {
    const char* code;  ///< four characters, in memory order
    const char* name;  ///< the host's identifier
};

/// In the order in which the log lists them.
std::span<const HostFormat> hostFormats();
/// Known to later hosts only.
std::span<const HostFormat> laterHostFormats();

/// The value of four characters in memory order.
std::uint32_t formatValue(const char* code);

enum class Family { kRgb, kYuv422, kYuv444 };

struct DeliveredFormat {
    const char* code;
    const char* name;          ///< display name
    std::uint32_t orvType;     ///< the codec library's code of the layout
    std::uint32_t colorSpace;  ///< 1 Rec.601, 2 Rec.709
    Family family;             ///< the YUV ones have limited range
    bool adobe16u;
    bool topLeftInTheField;  ///< what the real host says

    bool limited() const { return family != Family::kRgb; }
};

/// In the order of preference.
std::span<const DeliveredFormat> deliveredFormats();
/// The codes of those of the families, in that order.
std::vector<std::string> deliveredCodes(std::initializer_list<Family> families);

enum class Model { kRgb, kYuv, kGrey };

struct CodedType {
    const char* tag;  ///< as it is read
    const char* name;
    std::uint32_t code;
    const char* ffmpegFormat;  ///< null where ffmpeg has no such pixel format
    Model model;
    bool alpha;
    unsigned chromaStepX;  ///< luma samples per chroma sample
    unsigned chromaStepY;
    unsigned bits;
    std::vector<const char*> preferred;  ///< codes of pixel formats

    /// As the sub-type tables count models: RGB, RGBA, YUV (grey included), YUVA.
    std::uint32_t modelNumber() const { return (model == Model::kRgb ? 0U : 2U) + (alpha ? 1U : 0U); }
    /// Bytes that a picture takes.
    std::size_t payloadBytes(std::uint32_t width, std::uint32_t height) const;
};

void PrintTo(const CodedType& type, std::ostream* out);

/// In the order in which a file announces them.
const std::vector<CodedType>& codedTypes();

}  // namespace formatlists
