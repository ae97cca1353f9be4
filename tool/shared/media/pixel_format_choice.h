// Which of the pixel formats on offer a command delivers. Pure functions; any thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace simhost::tool {

/// The part of a format's identifier that tells formats apart even where names of files ignore case.
std::string shortFormatName(std::uint32_t format);

/// The formats that `wanted` names by identifier or code, "all" for every one; the first on offer when it
/// names none. Throws a ToolError that lists what is on offer for a name that is not.
std::vector<std::uint32_t> chosenFormats(const std::vector<std::string>& wanted,
                                         const std::vector<std::uint32_t>& offered);

}  // namespace simhost::tool
