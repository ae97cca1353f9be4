// What the synchronous and the asynchronous frame selectors share: the request record, and the check of what
// comes back. Internal to the simulated host; any thread.
#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "host/records.h"
#include "simhost/clip.h"

namespace simhost {

/// The record of a frame request without a place for the frame. The formats must live as long as it is used.
host::imSourceVideoRec frameRequest(const Importer& importer, void* privateData, host::PrTime time,
                                    std::span<const host::imFrameFormat> formats);

/// Adds a place for the frame, lets `call` pass the record to the plug-in, and takes the frame over. `name`
/// is the call's, for reports.
FrameAnswer requestFrame(const Importer& importer, host::imSourceVideoRec record, const char* name,
                         const std::function<std::int32_t(void* record)>& call);

}  // namespace simhost
