// The services that the simulated host offers: every function of its tables that works. Counting, tracing and
// fault injection go by these. Functions that an importer has no business with are not services: calling one
// is a violation.
#pragma once

#include <cstddef>

namespace simhost {

enum class Service {
    kNewPtr,
    kNewPtrClear,
    kSetPtrSize,
    kGetPtrSize,
    kDisposePtr,
    kGetSPBasicSuite,
    kAcquireSuite,
    kReleaseSuite,
    kSetEventString,
    kCreatePPix,
    kDisposePPix,
    kGetPixels,
    kGetRowBytes,
    kGetTicksPerSecond,
    kFormatIsCompressed,
    kFormatHasAlpha,
    kFormatIsOriginTopLeft,
    kConvertFrom8Bit,
    kConvertFrom16Bit,
    kConvertFrom24Bit,
    kConvertFrom32Bit,
};

inline constexpr std::size_t kServiceCount = static_cast<std::size_t>(Service::kConvertFrom32Bit) + 1;

/// The host's own name of the function, for reports. Static text.
const char* serviceName(Service service) noexcept;

}  // namespace simhost
