// One session of the codec library, and the checked calls into it. Every non-zero result becomes an
// OrvantisError.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "video/orvantis_common64.h"

namespace orvantis {

using FormatData = std::span<const std::uint8_t>;  ///< a video stream's format, the whole strf

/// Owns a session from library_init and open to close and library_close. One session is used by one thread at
/// a time. Buffers are the caller's and are only used during the call.
class OrvantisCodec {
 public:
    /// Initialises the library and opens a session. Throws OrvantisError; nothing is closed then.
    OrvantisCodec();
    /// Ends the session, and with it a decompression that is still running. Does nothing without a handle.
    ~OrvantisCodec();
    OrvantisCodec(const OrvantisCodec&) = delete;
    OrvantisCodec& operator=(const OrvantisCodec&) = delete;

    std::uint32_t handle() const noexcept { return m_handle; }

    /// What `format` would be decoded to with `output`, or, with null, what the coded video is.
    OrvantisFrameFormat decompressQuery(FormatData format, const OrvantisFrameFormat* output) const;
    /// As decompressQuery, but answers whether the library accepts instead of throwing; builds no error text.
    bool canDecompress(FormatData format, const OrvantisFrameFormat& output) const noexcept;
    /// Begins a decompression session; returns the format that the library will really produce.
    OrvantisFrameFormat decompressBegin(FormatData format, const OrvantisFrameFormat& output);
    /// Decodes one frame in the form asked for at the begin. Allocates nothing unless it fails.
    void decompress(std::span<const std::byte> frame, const OrvantisOutputBuffer& output);
    /// Ends the decompression; the session stays open.
    void decompressEnd();
    /// What the library answers for `parameter` (kOrvantisParam...) of the codec type `value`; non-zero means
    /// yes.
    std::uint32_t getParam(std::uint32_t parameter, std::uint32_t value) const;

 private:
    std::uint32_t m_handle = 0;  ///< 0: no session
};

/// The record with the words that every query and begin carries: 0, 0, 254, 1, 0, 0, 0, 0, 0.
OrvantisFrameFormat emptyFrameFormat() noexcept;

/// The library's names; a null answer is the empty text.
const char* codecTypeName(std::uint32_t type) noexcept;
const char* colorSpaceName(std::uint32_t colorSpace) noexcept;

}  // namespace orvantis
