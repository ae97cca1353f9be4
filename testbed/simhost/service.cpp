#include "simhost/service.h"

#include <array>

namespace simhost {

const char* serviceName(Service service) noexcept {
    // In the order of the enumeration.
    static constexpr std::array<const char*, kServiceCount> kNames = {
        "newPtr",
        "newPtrClear",
        "setPtrSize",
        "getPtrSize",
        "disposePtr",
        "getSPBasicSuite",
        "AcquireSuite",
        "ReleaseSuite",
        "SetEventStringUnicode",
        "CreatePPix",
        "Dispose",
        "GetPixels",
        "GetRowBytes",
        "GetTicksPerSecond",
        "FormatIsCompressed",
        "FormatHasAlpha",
        "FormatIsOriginTopLeft",
        "UninterleaveAndConvertFrom8BitInteger",
        "UninterleaveAndConvertFrom16BitInteger",
        "UninterleaveAndConvertFrom24BitInteger",
        "UninterleaveAndConvertFrom32BitInteger",
    };
    return kNames[static_cast<std::size_t>(service)];
}

}  // namespace simhost
