// Names of the host's numeric codes for log lines. Pure functions over a code taken as unsigned; an unknown
// code gives
// "????". The strings are static. Any thread.
#pragma once

#include <cstdint>

namespace orvantis {

const char* selectorName(std::uint32_t code) noexcept;       ///< importer selectors
const char* errorName(std::uint32_t code) noexcept;          ///< importer result codes
const char* asyncSelectorName(std::uint32_t code) noexcept;  ///< asynchronous importer selectors
const char* asyncErrorName(std::uint32_t code) noexcept;     ///< asynchronous importer result codes

}  // namespace orvantis
