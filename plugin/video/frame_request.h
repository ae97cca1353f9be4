// One host request for a video frame, filled by the caller and completed by the steps of the frame import.
#pragma once

#include <cstdint>
#include <vector>

#include "avi/frame_chunk.h"
#include "host/records.h"
#include "host/suites.h"
#include "suites/host_frame.h"

namespace orvantis {

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
