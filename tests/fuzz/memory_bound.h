// What a file may make the plug-in allocate, so that an input which drives memory up is found before it has
// to exhaust the machine.
#pragma once

#include <cstddef>

namespace fuzz {

/// What nothing but an error may exceed while a file of `fileBytes` is worked on.
constexpr std::size_t memoryBound(std::size_t fileBytes) noexcept {
    return (std::size_t{64} << 20) + 24 * fileBytes;
}

}  // namespace fuzz
