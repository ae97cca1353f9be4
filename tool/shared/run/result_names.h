// Result codes in words for people. Pure functions; any thread.
#pragma once

#include <cstdint>
#include <string>

namespace simhost::tool {

/// "imBadFile (2)".
std::string resultText(std::int32_t result);

}  // namespace simhost::tool
