// A host with next to no cost of its own, for measuring: suites that keep nothing, check nothing and, once
// warm, allocate nothing. Frames come from a list of spare ones and are never cleared; the audio suite moves
// bytes without converting them. The strict host of the tests is simhost/host.h.
#pragma once

#include <cstdint>

#include "host/std_parms.h"
#include "host/suites.h"

namespace simhost::tool {

/// Ticks per second of this host.
inline constexpr host::PrTime kBenchTicks = 254016000000;

/// The standard parameters for a call of the plug-in. What they lead to lives as long as the process. The
/// host's services may be called from any thread.
host::imStdParms benchStdParms() noexcept;

/// The suites as the plug-in gets them, so that the cost of the host's own functions can be measured alone.
const host::PPixCreatorSuite& benchPPixCreatorSuite() noexcept;
const host::PPixSuite& benchPPixSuite() noexcept;

/// Counts this host's frames in the order in which they were created, which is that of their decoding.
std::uint64_t benchFrameSerial(host::PPixHand frame) noexcept;

}  // namespace simhost::tool
