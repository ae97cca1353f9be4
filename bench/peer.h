// The peer for opening: libavformat, used the way any program opens a clip.
#pragma once

#include <cstdint>
#include <string>

namespace orvantis::bench {

/// Opens the file and finds its streams' information; closing is not timed. Seconds. Throws
/// std::runtime_error when the file is refused or does not have `frames` video frames in its index.
double timePeerOpening(const std::string& path, std::uint32_t frames);

/// "libavformat 59.27.100".
std::string peerName();

}  // namespace orvantis::bench
