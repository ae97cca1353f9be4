// Clips that are not what they should be. Main thread only.
#pragma once

#include <string>

#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {

/// Opens the file and asks for a few of its frames and samples, whatever the answers are. Fails the trial
/// when frames are left with the plug-in behind it.
void playDamaged(Trial& trial, Stage& stage, const std::string& path, const std::string& what);

}  // namespace simhost::tool::validate
