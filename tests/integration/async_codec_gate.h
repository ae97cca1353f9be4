// The stand-in codec's own gate, for tests that hold a frame in the middle of its decompression. Make it
// before the codec is first used in the test; it opens at the end, so that nothing waits for a test that has
// failed.
#pragma once

#include <string>

#include "standin/gate.h"
#include "tests/support/environment.h"

class CodecGate {
 public:
    explicit CodecGate(const std::string& name)
        : m_name(name), m_gate(cleared(name)), m_variable("ORVANTIS_STANDIN_GATE", name) {}
    CodecGate(const CodecGate&) = delete;
    CodecGate& operator=(const CodecGate&) = delete;
    ~CodecGate() {
        m_gate.release(1000);
        orvantis::standin::Gate::remove(m_name);
    }

    /// One more decompression stands at the gate. False when none came.
    bool arrived() { return m_gate.waitForArrival(); }
    /// True when another one stands there now.
    bool anotherArrived() { return m_gate.waitForArrival(std::chrono::milliseconds(0)); }
    void letThrough(unsigned count = 1) { m_gate.release(count); }

 private:
    static const std::string& cleared(const std::string& name) {
        orvantis::standin::Gate::remove(name);
        return name;
    }

    std::string m_name;
    orvantis::standin::Gate m_gate;
    orvantis::test::ScopedEnvironment m_variable;
};
