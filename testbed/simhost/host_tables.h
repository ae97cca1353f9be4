// The function tables of the simulated host: constant, with every slot filled, the unused ones with functions
// that note a violation under the slot's name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "host/std_parms.h"

namespace simhost {

const host::MemoryFunctions& memoryTable() noexcept;
const host::UtilityFunctions& utilityTable() noexcept;
host::SPBasicSuite& basicTable() noexcept;

/// The suites, in the order of hostSuites().
enum class Suite { kError, kPPixCreator, kPPixCache, kPPix, kTime, kImageProcessing, kAudio };
inline constexpr std::size_t kSuiteCount = static_cast<std::size_t>(Suite::kAudio) + 1;

struct HostSuite {
    const char* name;
    std::int32_t version;
    const void* table;
};
std::span<const HostSuite> hostSuites() noexcept;

/// Position of a suite in hostSuites(), or kSuiteCount for a name or version that this host has not.
std::size_t findSuite(const char* name, std::int32_t version) noexcept;

}  // namespace simhost
