// printf into strings, and four-character codes as text. Pure functions, any thread.
#pragma once

#include <cstdint>
#include <string>

#include "diag/compiler.h"

namespace orvantis {

/// printf into a new string; empty when the format is in error.
std::string formatString(const char* format, ...) ORVANTIS_PRINTF(1, 2);

/// A four-character code as text, lowest byte first, or highest byte first when `reversed` (file type and
/// sub-type codes hold their first character in the highest byte). Unprintable bytes are written as "[%u]".
/// At most 20 characters.
std::string fourccToString(std::uint32_t code, bool reversed = false);

}  // namespace orvantis
