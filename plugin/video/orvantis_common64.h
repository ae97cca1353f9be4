// The C interface of the codec maker's library, orvantis_common64.
//
// Owns: the declarations of its eleven functions, the two records that cross the border, and the numbers that
// both sides know by meaning. Called by: OrvantisCodec and the format tables; implemented by the maker's DLL,
// and in our tests by standin/. Threads: calls on different handles may run at the same time; the caller
// keeps the calls on one handle apart. Never: a function body, an owner of anything. The library is imported
// by its undecorated names only; nothing of the maker's is needed to build.

#pragma once

#include <cstddef>
#include <cstdint>

// The plug-in imports the functions through an import library, which needs no declaration attribute. Only the
// build of the library itself, which sets ORVANTIS_COMMON64_BUILD, marks them for export.
#if defined(ORVANTIS_COMMON64_BUILD) && defined(_WIN32)
#define ORVANTIS_COMMON64_API __declspec(dllexport)
#else
#define ORVANTIS_COMMON64_API
#endif

// A frame description: nine 32-bit words, read and written by orvantis_decompress_query and
// orvantis_decompress_begin.
struct OrvantisFrameFormat {
    std::uint32_t width;       // pixels; 0 on input = take it from the stream
    std::uint32_t height;      // pixels; 0 on input = take it from the stream
    std::uint32_t word3;       // always orvantis::kOrvantisFrameFormatWord3 on input
    std::uint32_t word4;       // always orvantis::kOrvantisFrameFormatWord4 on input
    std::uint32_t type;        // a code of video/orvantis_type_codes.h
    std::uint32_t flags;       // orvantis::kOrvantisFlag...
    std::uint32_t colorSpace;  // orvantis::kOrvantisColorSpace...
    std::uint32_t range;       // orvantis::kOrvantisRange...
    std::uint32_t word9;       // 0 on input
};

static_assert(sizeof(OrvantisFrameFormat) == 36);
static_assert(alignof(OrvantisFrameFormat) == 4);
static_assert(offsetof(OrvantisFrameFormat, width) == 0);
static_assert(offsetof(OrvantisFrameFormat, height) == 4);
static_assert(offsetof(OrvantisFrameFormat, word3) == 8);
static_assert(offsetof(OrvantisFrameFormat, word4) == 12);
static_assert(offsetof(OrvantisFrameFormat, type) == 16);
static_assert(offsetof(OrvantisFrameFormat, flags) == 20);
static_assert(offsetof(OrvantisFrameFormat, colorSpace) == 24);
static_assert(offsetof(OrvantisFrameFormat, range) == 28);
static_assert(offsetof(OrvantisFrameFormat, word9) == 32);

// Where a decoded frame goes. The library writes its first row at `pixels`; bit 0 of the flags alone says
// whether that is the bottom row of the picture.
struct OrvantisOutputBuffer {
    void* pixels;              // first row, owned by the caller
    std::uint32_t rowPitch;    // bytes from row to row; a negative pitch arrives as its two's complement
    std::uint32_t totalBytes;  // rowPitch x height, modulo 2^32
};

static_assert(sizeof(OrvantisOutputBuffer) == 16);
static_assert(alignof(OrvantisOutputBuffer) == 8);
static_assert(offsetof(OrvantisOutputBuffer, pixels) == 0);
static_assert(offsetof(OrvantisOutputBuffer, rowPitch) == 8);
static_assert(offsetof(OrvantisOutputBuffer, totalBytes) == 12);

namespace orvantis {

// Every function but orvantis_get_string answers this for success; every other value is an error code that
// orvantis_get_string turns into text.
inline constexpr std::int32_t kOrvantisSuccess = 0;

// OrvantisFrameFormat::word3 and word4: the library demands these values, their meaning is its own.
inline constexpr std::uint32_t kOrvantisFrameFormatWord3 = 254;
inline constexpr std::uint32_t kOrvantisFrameFormatWord4 = 1;

// OrvantisFrameFormat::flags, bit by bit.
inline constexpr std::uint32_t kOrvantisFlagBottomUp = 1;      // rows are delivered bottom row first
inline constexpr std::uint32_t kOrvantisFlagRange0_32768 = 2;  // 16-bit samples run from 0 to 32768

// OrvantisFrameFormat::colorSpace.
inline constexpr std::uint32_t kOrvantisColorSpaceRec601 = 1;
inline constexpr std::uint32_t kOrvantisColorSpaceRec709 = 2;

// OrvantisFrameFormat::range.
inline constexpr std::uint32_t kOrvantisRangeLimited = 1;
inline constexpr std::uint32_t kOrvantisRangeFull = 2;

// First argument of orvantis_get_string.
inline constexpr std::uint32_t kOrvantisStringTypeName = 1;
inline constexpr std::uint32_t kOrvantisStringErrorText = 2;
inline constexpr std::uint32_t kOrvantisStringColorSpaceName = 3;

// Second argument of orvantis_get_param. Both take a type code in the value and answer non-zero for yes.
inline constexpr std::uint32_t kOrvantisParamCanFlip = 7;
inline constexpr std::uint32_t kOrvantisParamSupportsRange0_32768 = 9;

}  // namespace orvantis

// Byte counts are 64-bit with a zero upper half, so that a library built with 32-bit counts reads the same
// number. Handles, kinds, codes and parameter numbers are 32-bit; handle 0 is never given out.
extern "C" {

// Once before each orvantis_open; balanced by orvantis_library_close.
ORVANTIS_COMMON64_API std::int32_t orvantis_library_init(void);
ORVANTIS_COMMON64_API std::int32_t orvantis_library_close(void);

// Opens a decoding session and stores its handle; orvantis_close ends it, and a running decompression with
// it.
ORVANTIS_COMMON64_API std::int32_t orvantis_open(std::uint32_t* handle);
ORVANTIS_COMMON64_API std::int32_t orvantis_close(std::uint32_t handle);

// `format`: the video stream's format data (the `strf` chunk's bytes). Without `output` (null) `result`
// receives the coded video's width, height, type, flags, colour space and range; with it the call answers
// whether the video can be delivered in that form, and `result` receives what would be produced.
ORVANTIS_COMMON64_API std::int32_t orvantis_decompress_query(std::uint32_t handle, const void* format,
                                                             std::uint64_t format_bytes,
                                                             const OrvantisFrameFormat* output,
                                                             OrvantisFrameFormat* result);

// Starts a decompression session; `produced` receives the format that the frames will have.
ORVANTIS_COMMON64_API std::int32_t orvantis_decompress_begin(std::uint32_t handle, const void* format,
                                                             std::uint64_t format_bytes,
                                                             const OrvantisFrameFormat* output,
                                                             OrvantisFrameFormat* produced);

// Decodes one compressed frame into `out` in the form that orvantis_decompress_begin was asked for.
ORVANTIS_COMMON64_API std::int32_t orvantis_decompress(std::uint32_t handle, const void* frame,
                                                       std::uint64_t frame_bytes,
                                                       const OrvantisOutputBuffer* out);

// Ends the decompression session; the library session stays open.
ORVANTIS_COMMON64_API std::int32_t orvantis_decompress_end(std::uint32_t handle);

// A NUL-terminated text owned by the library, valid as long as it is loaded. Needs no open session.
ORVANTIS_COMMON64_API const char* orvantis_get_string(std::uint32_t kind, std::uint32_t code);

// `value`: 32 bits, the type code on input and the answer on output; `value_bytes` is 4.
ORVANTIS_COMMON64_API std::int32_t orvantis_get_param(std::uint32_t handle, std::uint32_t parameter,
                                                      std::uint32_t* value, std::uint64_t value_bytes);

// Imported because the maker's list of names has it; decoding never calls it and its arguments are not known
// here.
ORVANTIS_COMMON64_API std::int32_t orvantis_compress_query(void);

}  // extern "C"
