// Counts the calls of operator new of the whole test program.
#pragma once

#include <cstdint>

namespace orvantis::audio_test {

std::uint64_t allocationCount() noexcept;

}  // namespace orvantis::audio_test
