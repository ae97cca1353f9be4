#include "tool/report/report_words.h"

#include <algorithm>
#include <array>

#include "host/result_codes.h"
#include "tool/shared/logs/log_explanations.h"

namespace simhost::tool {
namespace {

struct LayoutWords {
    std::string_view code;
    const char* name;
    const char* words;
};

constexpr std::array kLayoutWords = {
    LayoutWords{"RG", "RGB", "RGB"},
    LayoutWords{"RA", "RGBA", "RGB with alpha"},
    LayoutWords{"YA", "YUVA 4:4:4:4", "YUV with alpha, colour in full (4:4:4:4)"},
    LayoutWords{"Y4", "YUV 4:4:4", "YUV, colour in full (4:4:4)"},
    LayoutWords{"Y2", "YUV 4:2:2", "YUV, colour at half the width (4:2:2)"},
    LayoutWords{"Y0", "YUV 4:2:0", "YUV, colour at half the width and height (4:2:0)"},
    LayoutWords{"G0", "YUV 4:0:0 greyscale", "grey, no colour (4:0:0)"},
};

const char* bitsOf(char code) {
    switch (code) {
        case '8':
            return "8";
        case '0':
            return "10";
        case '2':
            return "12";
        case '4':
            return "14";
        default:
            return nullptr;
    }
}

}  // namespace

CodedWords codedWords(std::string_view type) {
    if (type.size() != 4 || type[0] != 'O') {
        return {};
    }
    const auto layout = std::find_if(kLayoutWords.begin(), kLayoutWords.end(),
                                     [&](const LayoutWords& row) { return row.code == type.substr(2); });
    const char* bits = bitsOf(type[1]);
    if (layout == kLayoutWords.end() || bits == nullptr) {
        return {};
    }
    return {std::string("Orvantis ") + bits + "-bit " + layout->name, layout->words, bits};
}

// "Compressed format info: 320 x 240, YUV422 (5), Rec.601 (1), range: 1"
std::string matrixWords(std::string_view logLine) {
    constexpr std::string_view kBegin = "Compressed format info: ";
    if (!logLine.starts_with(kBegin)) {
        return {};
    }
    constexpr std::string_view kRange = ", range: ";
    const std::size_t range = logLine.rfind(kRange);
    const bool full = range != std::string_view::npos && logLine.substr(range + kRange.size()) == "2";
    const bool limited = range != std::string_view::npos && logLine.substr(range + kRange.size()) == "1";
    const std::string_view before = logLine.substr(0, range);
    const std::size_t open = before.rfind(" (");
    const std::string code(open == std::string_view::npos ? "" : before.substr(open));
    const char* matrix = code == " (1)" ? "Rec.601" : code == " (2)" ? "Rec.709" : nullptr;
    if (matrix == nullptr) {
        return {};
    }
    return std::string(matrix) + (full ? ", full range" : limited ? ", limited range" : "");
}

std::string lostFrameWords(std::int32_t result) {
    switch (result) {
        case host::imBadCompression:
            return "This frame could not be decoded: its data is damaged, or the codec is too old for it.";
        case host::imFileReadFailed:
        case host::imDiskErr:
            return "The data of this frame could not be read: the file is cut off, or its disk fails.";
        case host::imFrameNotFound:
            return "The file has no such frame.";
        case host::imMemErr:
            return "There was not enough memory for this frame.";
        case host::imOtherErr:
            return "The plug-in could not read or decode this frame.";
        case host::kUnhandledException:
            return "The plug-in failed on this frame in a way that it did not expect.";
        default:
            return "The plug-in did not deliver this frame.";
    }
}

}  // namespace simhost::tool
