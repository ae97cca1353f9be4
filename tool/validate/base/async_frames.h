// Frames by the asynchronous importer, compared with those by imGetSourceVideo. Main thread only.
#pragma once

#include <cstdint>
#include <string>

#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {

/// aiInitiateAsyncRead.
void initiateFrame(const Playing& playing, const AsyncClip& async, std::uint32_t frame, std::uint32_t format);

/// aiGetFrame; fails the trial when it is not the frame of imGetSourceVideo. `when` goes behind the name of
/// the call.
void compareAsyncFrame(Trial& trial, Playing& playing, const AsyncClip& async, std::uint32_t frame,
                       std::uint32_t format, const std::string& when);

}  // namespace simhost::tool::validate
