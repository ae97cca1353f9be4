// Frames and sound of a clip, in the host's memory. Any number of calls at once; the caller keeps the file
// open meanwhile.
#pragma once

#include <cstdint>

#include "clip.h"
#include "host/records.h"

namespace sample {

/// Makes the frame that the request asks for, if the request accepts what a clip has: its own size in BGRA.
/// `frame` is the caller's on imNoErr, and untouched otherwise.
std::int32_t makeFrame(const Clip& clip, const host::imSourceVideoRec& request, host::PPixHand& frame);

/// Fills the record's buffers, one for each channel. A position below 0 goes on behind the last request;
/// behind the end there is silence.
std::int32_t importAudio(Clip& clip, const host::imImportAudioRec7& record);

}  // namespace sample
