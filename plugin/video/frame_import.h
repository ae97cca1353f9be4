// The three steps that turn a request into a decoded host frame. The synchronous selector and the
// asynchronous tasks run the same ones. They take no lock, and a request is used by one thread at a time: any
// number of requests may be prepared and decoded at once, each with a codec session to itself, but callers
// keep the reading from one file apart, since a file has one position. Each returns one of the host's result
// codes and runs only if the one before returned imNoErr. A frame that a failed decode leaves in the request
// is given back to the host when the request is dropped or filled anew.
#pragma once

#include <cstdint>

#include "fileio/file.h"
#include "host/result_codes.h"
#include "suites/importer_suites.h"
#include "video/frame_request.h"
#include "video/video_info.h"

namespace orvantis {

/// Time to frame index, format and size check. imNoErr, imFrameNotFound or imOtherErr.
host::ImporterResult prepareFrame(const VideoInfo& video, FrameRequest& request);
/// The frame's compressed bytes, by a seek and a read of `file`, which nobody else uses meanwhile. imNoErr,
/// imFrameNotFound or imFileReadFailed.
host::ImporterResult readFrame(const VideoInfo& video, fileio::File& file, FrameRequest& request);
/// Begins or changes the decompression as needed, creates the host frame and decodes into it.
/// imNoErr, imOtherErr or imBadCompression; throws std::runtime_error for a pixel format outside the table or
/// a missing suite. The request's frame formats must not be empty and its PPix suite must be set
/// (FrameRequest::assign).
host::ImporterResult decodeFrame(const VideoInfo& video, ImporterSuites& suites, FrameRequest& request);

}  // namespace orvantis
