#include "tool/shared/media/pixel_format_choice.h"

#include <algorithm>

#include "simhost/frame.h"
#include "simhost/text.h"
#include "tool/shared/base/tool_error.h"

namespace simhost::tool {

std::string shortFormatName(std::uint32_t format) {
    const std::string name = pixelFormatName(format);
    return name.substr(name.find('_') + 1);
}

std::vector<std::uint32_t> chosenFormats(const std::vector<std::string>& wanted,
                                         const std::vector<std::uint32_t>& offered) {
    if (offered.empty()) {
        throw ToolError(kFailed, "the plug-in offers no pixel format", "update the Orvantis codec");
    }
    std::vector<std::uint32_t> out;
    for (const std::string& text : wanted) {
        if (text == "all") {
            out.insert(out.end(), offered.begin(), offered.end());
            continue;
        }
        const auto format = pixelFormatFromText(text);
        if (format && std::find(offered.begin(), offered.end(), *format) != offered.end()) {
            out.push_back(*format);
            continue;
        }
        std::string list;
        for (const std::uint32_t known : offered) {
            list += (list.empty() ? "" : ", ") + shortFormatName(known) + " (" + codeText(known, false) + ")";
        }
        throw ToolError(kUsage,
                        format ? "this clip is not on offer as '" + text + "'"
                               : "there is no pixel format '" + text + "'",
                        "on offer are " + list, "format-not-offered");
    }
    return out.empty() ? std::vector{offered.front()} : out;
}

}  // namespace simhost::tool
