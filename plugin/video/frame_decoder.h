// The codec sessions of one video. The library wants the calls on one session kept apart, while the host may
// ask for two frames of a file at once: each decoding call has a session to itself.
#pragma once

#include <cstdint>
#include <memory>

#include "diag/atomic.h"
#include "diag/spare.h"
#include "host/pixel_formats.h"
#include "video/orvantis_codec.h"

namespace orvantis {

/// One session of the codec library and the decompression that runs in it. Used by one call at a time.
struct DecodeSession {
    OrvantisCodec codec;
    OrvantisFrameFormat output{};  ///< what the library said it produces
    bool begun = false;
    /// Of the running decompression; "badf" at first, which matches no real format.
    std::uint32_t pixelFormat = host::PrPixelFormat_Invalid;
};

class FrameDecoder {
 public:
    /// Opens the main session. Throws OrvantisError.
    FrameDecoder() = default;
    FrameDecoder(const FrameDecoder&) = delete;
    FrameDecoder& operator=(const FrameDecoder&) = delete;

    /// The session that every call decodes with unless another one is decoding at that moment. To be used
    /// directly only while no other thread knows this object.
    DecodeSession& mainSession() noexcept { return m_main; }
    /// Closes the session that calls which met another one have left behind. The main one stays.
    void dropSpareSession() noexcept { m_spare.drop(); }

    /// A session for the length of one call, which nobody else uses meanwhile. Any thread; never waits.
    class Use {
     public:
        /// The main session, else the spare one, else one opened for this call. Throws OrvantisError when
        /// that fails.
        explicit Use(FrameDecoder& decoder);
        /// At most one session besides the main one is kept.
        ~Use();
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;

        DecodeSession& session() const noexcept { return m_own ? *m_own : m_decoder.m_main; }

     private:
        FrameDecoder& m_decoder;
        std::unique_ptr<DecodeSession> m_own;  // null: the main session
    };

 private:
    DecodeSession m_main;
    Atomic<bool> m_mainInUse{false};
    Spare<DecodeSession> m_spare;
};

}  // namespace orvantis
