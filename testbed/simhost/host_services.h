// The functions behind the tables of the simulated host. They carry no context, so each finds the living
// Host; without one, a plug-in has called after its host was gone, which ends the process with a message. Any
// thread.
#pragma once

#include <cstdint>

#include "host/std_parms.h"
#include "host/suites.h"

namespace simhost {

struct HostServices {
    static void unused(const char* slot);

    static void* newPtr(std::uint32_t size);
    static void* newPtrClear(std::uint32_t size);
    static void setPtrSize(void** pointer, std::uint32_t newSize);
    static std::int32_t getPtrSize(void* pointer);
    static void disposePtr(void* pointer);

    static host::SPBasicSuite* getSPBasicSuite();
    static host::SPErr acquireSuite(const char* name, std::int32_t version, const void** suite);
    static host::SPErr releaseSuite(const char* name, std::int32_t version);

    static host::prSuiteError setEventString(std::uint32_t eventType, const char16_t* title,
                                             const char16_t* description);
    static host::prSuiteError createPPix(host::PPixHand* frame, std::int32_t access,
                                         std::uint32_t pixelFormat, const host::prRect* bounds);
    static host::prSuiteError disposePPix(host::PPixHand frame);
    static host::prSuiteError getPixels(host::PPixHand frame, std::int32_t access, char** pixels);
    static host::prSuiteError getRowBytes(host::PPixHand frame, std::int32_t* rowBytes);
    static host::prSuiteError getTicksPerSecond(host::PrTime* ticks);
    static host::prSuiteError formatIsCompressed(std::uint32_t pixelFormat, std::int32_t* answer);
    static host::prSuiteError formatHasAlpha(std::uint32_t pixelFormat, std::int32_t* answer);
    static host::prSuiteError formatIsOriginTopLeft(std::uint32_t pixelFormat, std::int32_t* answer);
    static host::prSuiteError convertFrom8Bit(const void* source, float** destination, std::uint32_t channels,
                                              std::uint32_t frames);
    static host::prSuiteError convertFrom16Bit(const void* source, float** destination,
                                               std::uint32_t channels, std::uint32_t frames);
    static host::prSuiteError convertFrom24Bit(const void* source, float** destination,
                                               std::uint32_t channels, std::uint32_t frames);
    static host::prSuiteError convertFrom32Bit(const void* source, float** destination,
                                               std::uint32_t channels, std::uint32_t frames);
};

}  // namespace simhost
