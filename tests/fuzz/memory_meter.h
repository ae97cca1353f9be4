// Measures what a fuzz target gets from operator new, so that an input which drives memory up is found before
// it has to exhaust the machine. Replaces the operators of the whole program. Any thread.
#pragma once

#include <cstddef>

namespace fuzz {

/// What is handed out now becomes the base line; the peak starts there.
void startMeter() noexcept;
/// Most bytes above the base line since startMeter().
std::size_t peakBytes() noexcept;

/// What nothing but an error may exceed while a file of `fileBytes` is worked on.
constexpr std::size_t memoryBound(std::size_t fileBytes) noexcept {
    return (std::size_t{64} << 20) + 24 * fileBytes;
}

}  // namespace fuzz
