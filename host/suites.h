// The host suites that the importer acquires: tables of function pointers, with the names and versions to ask
// for. A slot that is never called stands as a bare pointer, so that every other function keeps its place.
// Functions answer 0 or a failure (host/result_codes.h); no exception may pass through them. The tables
// belong to the host, are only read, and may be used as long as the suite is held.

#pragma once

#include "host/basic_types.h"
#include "host/layout_checks.h"

#include <cstddef>
#include <cstdint>

namespace host {

// Event types of the error suite. Higher bits of the value are flags.
inline constexpr std::uint32_t kEventTypeInformational = 1;
inline constexpr std::uint32_t kEventTypeWarning = 2;
inline constexpr std::uint32_t kEventTypeError = 3;

// What the caller will do with the pixels of a frame buffer.
inline constexpr std::int32_t kBufferAccessReadOnly = 0;
inline constexpr std::int32_t kBufferAccessWriteOnly = 1;
inline constexpr std::int32_t kBufferAccessReadWrite = 2;

inline constexpr char kErrorSuiteName[] = "Premiere Error Suite";
inline constexpr std::int32_t kErrorSuiteVersion = 3;

// Where an importer reports events to the user. Both texts are NUL-terminated UTF-16 and need to live during
// the call only.
struct ErrorSuite {
    prSuiteError (*SetEventStringUnicode)(std::uint32_t eventType, const char16_t* title,
                                          const char16_t* description);
};
ORVANTIS_HOST_SLOT(ErrorSuite, SetEventStringUnicode, 0);
static_assert(sizeof(ErrorSuite) == 1 * sizeof(void*));

inline constexpr char kPPixCreatorSuiteName[] = "Premiere PPix Creator Suite";
inline constexpr std::int32_t kPPixCreatorSuiteVersion = 1;

// Creates frame buffers. `frame` receives a buffer that the caller owns until it hands it over or disposes of
// it; the host refuses kBufferAccessReadOnly.
struct PPixCreatorSuite {
    prSuiteError (*CreatePPix)(PPixHand* frame, std::int32_t access, std::uint32_t pixelFormat,
                               const prRect* bounds);
    void* ClonePPix;
};
ORVANTIS_HOST_SLOT(PPixCreatorSuite, CreatePPix, 0);
ORVANTIS_HOST_SLOT(PPixCreatorSuite, ClonePPix, 1);
static_assert(sizeof(PPixCreatorSuite) == 2 * sizeof(void*));

inline constexpr char kPPixCacheSuiteName[] = "Premiere PPix Cache Suite";
inline constexpr std::int32_t kPPixCacheSuiteVersion = 6;

// The host's frame cache. Held while a file is open, never called.
struct PPixCacheSuite {
    void* AddFrameToCache;
    void* GetFrameFromCache;
    void* AddRawPPixToCache;
    void* GetRawPPixFromCache;
    void* AddNamedPPixToCache;
    void* GetNamedPPixFromCache;
    void* RegisterDependencyOnNamedPPix;
    void* UnregisterDependencyOnNamedPPix;
    void* ExpireNamedPPixFromCache;
    void* ExpireAllPPixesFromCache;
    void* AddFrameToCacheWithColorProfile;
    void* GetFrameFromCacheWithColorProfile;
    void* AddFrameToCacheWithColorProfile2;
    void* GetFrameFromCacheWithColorProfile2;
};
ORVANTIS_HOST_SLOT(PPixCacheSuite, AddFrameToCache, 0);
ORVANTIS_HOST_SLOT(PPixCacheSuite, GetFrameFromCache, 1);
ORVANTIS_HOST_SLOT(PPixCacheSuite, AddRawPPixToCache, 2);
ORVANTIS_HOST_SLOT(PPixCacheSuite, GetRawPPixFromCache, 3);
ORVANTIS_HOST_SLOT(PPixCacheSuite, AddNamedPPixToCache, 4);
ORVANTIS_HOST_SLOT(PPixCacheSuite, GetNamedPPixFromCache, 5);
ORVANTIS_HOST_SLOT(PPixCacheSuite, RegisterDependencyOnNamedPPix, 6);
ORVANTIS_HOST_SLOT(PPixCacheSuite, UnregisterDependencyOnNamedPPix, 7);
ORVANTIS_HOST_SLOT(PPixCacheSuite, ExpireNamedPPixFromCache, 8);
ORVANTIS_HOST_SLOT(PPixCacheSuite, ExpireAllPPixesFromCache, 9);
ORVANTIS_HOST_SLOT(PPixCacheSuite, AddFrameToCacheWithColorProfile, 10);
ORVANTIS_HOST_SLOT(PPixCacheSuite, GetFrameFromCacheWithColorProfile, 11);
ORVANTIS_HOST_SLOT(PPixCacheSuite, AddFrameToCacheWithColorProfile2, 12);
ORVANTIS_HOST_SLOT(PPixCacheSuite, GetFrameFromCacheWithColorProfile2, 13);
static_assert(sizeof(PPixCacheSuite) == 14 * sizeof(void*));

inline constexpr char kPPixSuiteName[] = "Premiere PPix Suite";
inline constexpr std::int32_t kPPixSuiteVersion = 1;

// Access to a frame buffer. Row bytes may be negative. Dispose ends the caller's ownership.
struct PPixSuite {
    prSuiteError (*Dispose)(PPixHand frame);
    prSuiteError (*GetPixels)(PPixHand frame, std::int32_t access, char** pixels);
    void* GetBounds;
    prSuiteError (*GetRowBytes)(PPixHand frame, std::int32_t* rowBytes);
    void* GetPixelAspectRatio;
    void* GetPixelFormat;
    void* GetUniqueKey;
    void* GetUniqueKeySize;
    void* GetRenderTime;
};
ORVANTIS_HOST_SLOT(PPixSuite, Dispose, 0);
ORVANTIS_HOST_SLOT(PPixSuite, GetPixels, 1);
ORVANTIS_HOST_SLOT(PPixSuite, GetBounds, 2);
ORVANTIS_HOST_SLOT(PPixSuite, GetRowBytes, 3);
ORVANTIS_HOST_SLOT(PPixSuite, GetPixelAspectRatio, 4);
ORVANTIS_HOST_SLOT(PPixSuite, GetPixelFormat, 5);
ORVANTIS_HOST_SLOT(PPixSuite, GetUniqueKey, 6);
ORVANTIS_HOST_SLOT(PPixSuite, GetUniqueKeySize, 7);
ORVANTIS_HOST_SLOT(PPixSuite, GetRenderTime, 8);
static_assert(sizeof(PPixSuite) == 9 * sizeof(void*));

inline constexpr char kTimeSuiteName[] = "Premiere Time Suite";
inline constexpr std::int32_t kTimeSuiteVersion = 1;

// The host's clock: how many ticks a second has.
struct TimeSuite {
    prSuiteError (*GetTicksPerSecond)(PrTime* ticks);
    void* GetTicksPerVideoFrame;
    void* GetTicksPerAudioSample;
};
ORVANTIS_HOST_SLOT(TimeSuite, GetTicksPerSecond, 0);
ORVANTIS_HOST_SLOT(TimeSuite, GetTicksPerVideoFrame, 1);
ORVANTIS_HOST_SLOT(TimeSuite, GetTicksPerAudioSample, 2);
static_assert(sizeof(TimeSuite) == 3 * sizeof(void*));

inline constexpr char kImageProcessingSuiteName[] = "Premiere Image Processing Suite";
inline constexpr std::int32_t kImageProcessingSuiteVersion = 2;

// Facts about pixel formats. Each answer is 32 bits, non-zero = yes. A host
// that fails may leave it unwritten, so callers clear it first.
struct ImageProcessingSuite {
    prSuiteError (*FormatIsCompressed)(std::uint32_t pixelFormat, std::int32_t* answer);
    prSuiteError (*FormatHasAlpha)(std::uint32_t pixelFormat, std::int32_t* answer);
    prSuiteError (*FormatIsOriginTopLeft)(std::uint32_t pixelFormat, std::int32_t* answer);
    void* GetSizeForPixelBuffer;
    void* ScaleConvert;
    void* CompressDV100720p;
    void* StampDVFrameAspect;
};
ORVANTIS_HOST_SLOT(ImageProcessingSuite, FormatIsCompressed, 0);
ORVANTIS_HOST_SLOT(ImageProcessingSuite, FormatHasAlpha, 1);
ORVANTIS_HOST_SLOT(ImageProcessingSuite, FormatIsOriginTopLeft, 2);
ORVANTIS_HOST_SLOT(ImageProcessingSuite, GetSizeForPixelBuffer, 3);
ORVANTIS_HOST_SLOT(ImageProcessingSuite, ScaleConvert, 4);
ORVANTIS_HOST_SLOT(ImageProcessingSuite, CompressDV100720p, 5);
ORVANTIS_HOST_SLOT(ImageProcessingSuite, StampDVFrameAspect, 6);
static_assert(sizeof(ImageProcessingSuite) == 7 * sizeof(void*));

inline constexpr char kAudioSuiteName[] = "Premiere Audio Suite";
inline constexpr std::int32_t kAudioSuiteVersion = 1;

// Sample conversion. Sources are interleaved little-endian samples, 24-bit ones in 3 bytes; destinations are
// one float buffer per channel, full scale 1.0; `frames` counts samples per channel.
struct AudioSuite {
    void* ConvertAndInterleaveTo8BitInteger;
    void* ConvertAndInterleaveTo16BitInteger;
    void* ConvertAndInterleaveTo24BitInteger;
    void* ConvertAndInterleaveTo32BitInteger;
    prSuiteError (*UninterleaveAndConvertFrom8BitInteger)(const void* source, float** destination,
                                                          std::uint32_t channels, std::uint32_t frames);
    prSuiteError (*UninterleaveAndConvertFrom16BitInteger)(const void* source, float** destination,
                                                           std::uint32_t channels, std::uint32_t frames);
    prSuiteError (*UninterleaveAndConvertFrom24BitInteger)(const void* source, float** destination,
                                                           std::uint32_t channels, std::uint32_t frames);
    prSuiteError (*UninterleaveAndConvertFrom32BitInteger)(const void* source, float** destination,
                                                           std::uint32_t channels, std::uint32_t frames);
};
ORVANTIS_HOST_SLOT(AudioSuite, ConvertAndInterleaveTo8BitInteger, 0);
ORVANTIS_HOST_SLOT(AudioSuite, ConvertAndInterleaveTo16BitInteger, 1);
ORVANTIS_HOST_SLOT(AudioSuite, ConvertAndInterleaveTo24BitInteger, 2);
ORVANTIS_HOST_SLOT(AudioSuite, ConvertAndInterleaveTo32BitInteger, 3);
ORVANTIS_HOST_SLOT(AudioSuite, UninterleaveAndConvertFrom8BitInteger, 4);
ORVANTIS_HOST_SLOT(AudioSuite, UninterleaveAndConvertFrom16BitInteger, 5);
ORVANTIS_HOST_SLOT(AudioSuite, UninterleaveAndConvertFrom24BitInteger, 6);
ORVANTIS_HOST_SLOT(AudioSuite, UninterleaveAndConvertFrom32BitInteger, 7);
static_assert(sizeof(AudioSuite) == 8 * sizeof(void*));

}  // namespace host
