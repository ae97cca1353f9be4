// The selectors that deliver frames and samples of one file. Each may throw, which the entry guard answers.
// Any host thread; calls on one file run side by side.
#pragma once

#include <cstdint>

#include "host/records.h"

namespace orvantis {

/// Decodes one frame and stores it through the record's outFrame, only on success.
std::int32_t getSourceVideo(const host::imSourceVideoRec& record);
std::int32_t importAudio7(const host::imImportAudioRec7& record);
std::int32_t getAudioChannelLayout(host::imGetAudioChannelLayoutRec& record);

}  // namespace orvantis
