// Takes a request over from the host's record, whose list of formats is gone when the call returns.
#include "video/frame_request.h"

namespace orvantis {

void FrameRequest::assign(std::int64_t time, const host::imFrameFormat* formats, std::int32_t numFormats,
                          const host::PPixSuite& suite) {
    frame.reset();
    frameTime = time;
    if (formats != nullptr && numFormats > 0) {
        frameFormats.assign(formats, formats + numFormats);
    } else {
        frameFormats.clear();
    }
    frameIndex = 0;
    chunk.bytes = 0;  // the buffer itself stays, to be read into again
    ppixSuite = &suite;
    formatChanged = false;
}

}  // namespace orvantis
