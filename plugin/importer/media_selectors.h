// The selectors that deliver frames and samples of one file. Each may throw, which the entry guard answers.
// Any host thread; calls on one file run side by side.
#pragma once

#include <cstdint>

#include "host/records.h"
#include "host/result_codes.h"

namespace orvantis {

/// Decodes one frame and stores it through the record's outFrame, only on success.
host::ImporterResult getSourceVideo(const host::imSourceVideoRec& record);
host::ImporterResult importAudio7(const host::imImportAudioRec7& record);
host::ImporterResult getAudioChannelLayout(host::imGetAudioChannelLayoutRec& record);

}  // namespace orvantis
