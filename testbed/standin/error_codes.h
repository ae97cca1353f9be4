// The result codes of the stand-in library and their texts.
//
// Called by: everything in standin/, and tests that expect a certain refusal. The numbers start at 1001 so
// that a library code in a log line is never mistaken for one of the host's importer results.

#pragma once

#include <cstdint>

namespace orvantis::standin {

enum class Error : std::int32_t {
    kNone = 0,
    kNotInitialised = 1001,         // orvantis_library_init is missing or was undone
    kInvalidHandle = 1002,          // never given out, or already closed
    kTooManySessions = 1003,        // kMaxSessions handles are open
    kHandleInUse = 1004,            // another thread is inside a call with this handle
    kInvalidArgument = 1005,        // a null pointer or an impossible byte count
    kMalformedFormatData = 1006,    // the stream's format data is no BITMAPINFOHEADER
    kUnknownCompression = 1007,     // its biCompression is none of the coded types
    kInvalidPictureSize = 1008,     // its width or height is 0 or too large
    kOutputNotSupported = 1009,     // the coded type cannot be delivered in this layout
    kInvalidFrameFormat = 1010,     // word 3 is not 254, word 4 is not 1 or word 9 is not 0
    kOutputSizeMismatch = 1011,     // requested size is neither 0 nor the video's
    kInvalidFlags = 1012,           // an unknown bit, or the 0..32768 range for another layout
    kInvalidColorSpace = 1013,      // neither Rec.601 nor Rec.709
    kInvalidRange = 1014,           // not the range that this layout is delivered in
    kDecompressionBegun = 1015,     // begin while a decompression runs
    kDecompressionNotBegun = 1016,  // decompress or end without begin
    kFrameTruncated = 1017,         // fewer bytes than the picture needs
    kInvalidOutputBuffer = 1018,    // no pixels, or a pitch shorter than a row
    kOutputBytesMismatch = 1019,    // total bytes are not pitch x height
    kUnknownParameter = 1020,       // orvantis_get_param knows 7 and 9
    kUnknownType = 1021,            // a type code that the library has no name for
    kNotSupported = 1022,           // there is no compressor here
    kOutOfMemory = 1023,            //
    kMalformedSettings = 1024,      // an ORVANTIS_STANDIN_ variable cannot be understood
    kSessionsOpen = 1025,           // the last library_close came before the last close
    kGateTimedOut = 1026,           // no test opened the gate in time
    kInternal = 1027,               //
    kInjectedFault = 1900,          // the default code of ORVANTIS_STANDIN_FAIL
};

// The text of a result code: "no error" for 0, "unknown error" for a code that is not in the list. Static,
// never null. Any thread.
const char* errorText(std::int32_t code) noexcept;

}  // namespace orvantis::standin
