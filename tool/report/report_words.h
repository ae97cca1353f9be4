// What codes and answers are called on the page of a report. Pure functions; any thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace simhost::tool {

/// What the four characters of a coded type mean; empty strings for a type that is none of the codec's.
struct CodedWords {
    std::string name;            ///< "Orvantis 8-bit YUV 4:2:2"
    std::string colourSpace;     ///< "YUV, colour at half the width (4:2:2)"
    std::string bitsPerChannel;  ///< "8"
};
CodedWords codedWords(std::string_view type);

/// "Rec.709, full range" from the plug-in's log line about a clip's coding; empty for every other line.
std::string matrixWords(std::string_view logLine);

/// Why a frame is not there, for people.
std::string lostFrameWords(std::int32_t result);

}  // namespace simhost::tool
