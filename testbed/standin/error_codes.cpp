#include "standin/error_codes.h"

namespace orvantis::standin {

const char* errorText(std::int32_t code) noexcept {
    switch (static_cast<Error>(code)) {
        case Error::kNone:
            return "no error";
        case Error::kNotInitialised:
            return "library not initialised";
        case Error::kInvalidHandle:
            return "invalid handle";
        case Error::kTooManySessions:
            return "too many sessions";
        case Error::kHandleInUse:
            return "handle in use by another call";
        case Error::kInvalidArgument:
            return "invalid argument";
        case Error::kMalformedFormatData:
            return "malformed format data";
        case Error::kUnknownCompression:
            return "unknown compression";
        case Error::kInvalidPictureSize:
            return "invalid picture size";
        case Error::kOutputNotSupported:
            return "output type not supported for this video";
        case Error::kInvalidFrameFormat:
            return "invalid frame format";
        case Error::kOutputSizeMismatch:
            return "output size differs from the video";
        case Error::kInvalidFlags:
            return "invalid flags";
        case Error::kInvalidColorSpace:
            return "invalid colour space";
        case Error::kInvalidRange:
            return "invalid range";
        case Error::kDecompressionBegun:
            return "decompression already begun";
        case Error::kDecompressionNotBegun:
            return "decompression not begun";
        case Error::kFrameTruncated:
            return "compressed frame truncated";
        case Error::kInvalidOutputBuffer:
            return "invalid output buffer";
        case Error::kOutputBytesMismatch:
            return "output byte count does not match";
        case Error::kUnknownParameter:
            return "unknown parameter";
        case Error::kUnknownType:
            return "unknown type";
        case Error::kNotSupported:
            return "not supported";
        case Error::kOutOfMemory:
            return "out of memory";
        case Error::kMalformedSettings:
            return "malformed stand-in settings";
        case Error::kSessionsOpen:
            return "sessions still open";
        case Error::kGateTimedOut:
            return "stand-in gate timed out";
        case Error::kInternal:
            return "internal error";
        case Error::kInjectedFault:
            return "injected fault";
    }
    return "unknown error";
}

}  // namespace orvantis::standin
