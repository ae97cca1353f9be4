// Decodes a clip through the plug-in, every frame and every sample, and hashes it: pictures by several
// threads, each with the clip opened for itself, every sound track by one. Main thread only.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "simhost/clip.h"
#include "tool/shared/run/hosted_run.h"
#include "tool/verify/clip_hashes.h"

namespace simhost::tool {

/// The clip as the host knows it, its index, and room for its hashes. Throws ToolError when the plug-in
/// refuses the file.
ClipHashes describeClip(const HostedRun& hosted, const std::string& pathUtf8);

/// A hash that has just been made.
struct HashDone {
    std::int32_t track = 0;  ///< 0: pictures
    std::size_t place = 0;   ///< in `pictures`, or in the track's `hashes`
};

/// Makes the hashes that are not done yet. `done` is called on this thread, in the order in which they are
/// made. Throws ToolError with kInterrupted when the program is to end; what is done by then has been told.
void hashClip(const HostedRun& hosted, const std::string& pathUtf8, std::uint32_t jobs, ClipHashes& clip,
              const std::function<void(HashDone)>& done);

}  // namespace simhost::tool
