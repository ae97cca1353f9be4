// One rescue, on a disk: looks at a clip, writes a new one, mends it where it lies, or brings its old bytes
// back.
#pragma once

#include <string>

#include "tool/rescue/storage.h"

namespace simhost::tool {

/// Without --out, --in-place and --undo nothing is written.
struct RescueOptions {
    std::string file;  ///< which is there
    std::string output;
    bool check = false;
    bool inPlace = false;
    bool undo = false;
    bool json = false;
    bool progress = false;
};

/// Gives the exit code. Throws ToolError; with kInterrupted once the program is to end, and then nothing has
/// changed. Main thread only.
int runRescue(Disk& disk, const RescueOptions& options);

}  // namespace simhost::tool
