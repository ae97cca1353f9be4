// One host request for a video frame, filled by the caller and completed by the steps of the frame import.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "avi/frame_chunk.h"
#include "host/records.h"
#include "host/suites.h"

namespace orvantis {

/// Owner of a host frame buffer until the host takes it: a frame that is not released is given back.
class HostFrame {
 public:
    HostFrame() noexcept = default;
    /// `suite` must stay acquired while the frame is held.
    HostFrame(const host::PPixSuite& suite, host::PPixHand ppix) noexcept : m_suite(&suite), m_ppix(ppix) {}
    HostFrame(HostFrame&& other) noexcept
        : m_suite(std::exchange(other.m_suite, nullptr)), m_ppix(std::exchange(other.m_ppix, nullptr)) {}
    HostFrame& operator=(HostFrame&& other) noexcept {
        if (this != &other) {
            reset();
            m_suite = std::exchange(other.m_suite, nullptr);
            m_ppix = std::exchange(other.m_ppix, nullptr);
        }
        return *this;
    }
    ~HostFrame() { reset(); }

    host::PPixHand get() const noexcept { return m_ppix; }
    explicit operator bool() const noexcept { return m_ppix != nullptr; }
    /// Hands the buffer to the host.
    host::PPixHand release() noexcept { return std::exchange(m_ppix, nullptr); }
    void reset() noexcept {
        if (m_ppix != nullptr) m_suite->Dispose(std::exchange(m_ppix, nullptr));
    }

 private:
    const host::PPixSuite* m_suite = nullptr;
    host::PPixHand m_ppix = nullptr;
};

struct FrameRequest {
    std::int64_t frameTime = 0;                     ///< host ticks
    std::vector<host::imFrameFormat> frameFormats;  ///< what the host accepts; only the first is used
    std::uint32_t frameIndex = 0;                   ///< set by prepareFrame
    FrameChunk chunk;                               ///< filled by readFrame
    const host::PPixSuite* ppixSuite = nullptr;     ///< kept so that a frame can be disposed of
    HostFrame frame;                                ///< set by decodeFrame
    bool formatChanged = false;  ///< a running session was ended because the pixel format changed

    /// Takes over the request fields of a host record. A null array or a count of 0 or less is an empty list.
    void assign(std::int64_t time, const host::imFrameFormat* formats, std::int32_t numFormats,
                const host::PPixSuite& suite);
};

}  // namespace orvantis
