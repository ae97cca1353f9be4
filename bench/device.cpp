#include "bench/device.h"

#include <chrono>
#include <thread>

#include "tool/bench/bench_workloads.h"

namespace orvantis::bench {

Device::Device(double latency, double bytesPerSecond) {
    m_hooks->beforeRead = [this, latency, bytesPerSecond](std::uint64_t bytes) {
        // A sleep ends late by some tens of microseconds; the rest is spent awake, to be exact.
        constexpr double kAwake = 100e-6;
        const std::lock_guard lock(m_mutex);
        const double transfer = bytesPerSecond > 0 ? static_cast<double>(bytes) / bytesPerSecond : 0;
        const double end = simhost::tool::benchClock() + latency + transfer;
        if (latency + transfer > kAwake) {
            std::this_thread::sleep_for(std::chrono::duration<double>(latency + transfer - kAwake));
        }
        while (simhost::tool::benchClock() < end) {
            std::this_thread::yield();
        }
    };
}

}  // namespace orvantis::bench
