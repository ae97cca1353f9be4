// A gate in front of decoding, so that a test decides when a frame is done: no sleeping, no guessing.
//
// Two named semaphores: decoding calls announce themselves with one and wait for the other. The library's
// side is passThrough(); the test's side, in this process or another one, opens a Gate of the same name and
// uses the rest. Any thread. A waiting call gives up after kGateTimeout, so a forgotten gate fails instead of
// hanging.

#pragma once

#include <chrono>
#include <string>

namespace orvantis::standin {

inline constexpr std::chrono::seconds kGateTimeout{60};

class Gate {
 public:
    // Creates the gate or joins an existing one. The name is one of letters, digits, '.', '_' and '-'. Throws
    // a runtime error when the system refuses it.
    explicit Gate(const std::string& name);
    ~Gate();

    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;

    // The decoding call: announces itself, then waits until it is let through. False when nobody did in time.
    bool passThrough(std::chrono::milliseconds timeout = kGateTimeout);

    // The test: waits until one more call has arrived. False when none came in time.
    bool waitForArrival(std::chrono::milliseconds timeout = kGateTimeout);
    // The test: lets `count` calls through, waiting or still to come.
    void release(unsigned count = 1);

    // Forgets a gate that an earlier process left behind. On Windows gates vanish with their last user.
    static void remove(const std::string& name);

 private:
    void* m_arrivals = nullptr;
    void* m_permits = nullptr;
};

}  // namespace orvantis::standin
