// From the analyses to the host's file info record: which fields are written, and what they say.
#pragma once

#include "host/records.h"
#include "video/video_info.h"

namespace orvantis {

/// The fields of a file that has a video stream. Every other field stays as the host gave it.
void fillVideoFields(host::imFileInfoRec8& record, const VideoInfo& video);

}  // namespace orvantis
