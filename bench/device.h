// A file that lies on a device: every read of the process waits for it. One device, so reads wait in turn.
#pragma once

#include <mutex>

#include "tests/support/file_hooks.h"

namespace orvantis::bench {

/// While one lives, each read of a file that is opened from now on takes at least `latency` seconds and as
/// long as its bytes take at `bytesPerSecond` (0: no time). The thread sleeps meanwhile, as it does for a
/// disk.
class Device {
 public:
    Device(double latency, double bytesPerSecond);
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

 private:
    std::mutex m_mutex;
    test::InstalledFileHooks m_hooks;
};

}  // namespace orvantis::bench
