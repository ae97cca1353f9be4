// The test settings of the stand-in: the ORVANTIS_STANDIN_ environment variables.
//
// Owns: their meaning. Called by: the library object at its first call and at every orvantis_library_init. A
// settings object is read only once it is made (the fault counters and the gate guard themselves); calls that
// run keep theirs.

#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "standin/environment.h"
#include "standin/fault_plan.h"
#include "standin/gate.h"

namespace orvantis::standin {

// The texts as they stand in the environment; empty = not set.
struct SettingsTexts {
    std::string fail;         // ORVANTIS_STANDIN_FAIL: see fault_plan.h
    std::string log;          // ORVANTIS_STANDIN_LOG: path of the trace
    std::string gate;         // ORVANTIS_STANDIN_GATE: name of the gate before decoding
    std::string decode;       // ORVANTIS_STANDIN_DECODE: "null" = check everything, write no pixels
    std::string delayMicros;  // ORVANTIS_STANDIN_DELAY_US: time that a decode takes at least, 0 to 10000000

    bool operator==(const SettingsTexts&) const = default;
};

struct Settings {
    SettingsTexts texts;
    std::shared_ptr<FaultPlan> faults;  // never null
    std::shared_ptr<Gate> gate;         // null without a gate
    bool nullDecode = false;
    std::chrono::microseconds delay{0};
};

// Settings with nothing set.
std::shared_ptr<const Settings> defaultSettings();

// The settings of this moment. `previous` itself when no text has changed; what belongs to an unchanged text
// is kept (counters, gate). Throws a runtime error that names the variable when a text cannot be understood,
// the gate cannot be opened or the trace cannot be written.
std::shared_ptr<const Settings> readSettings(const EnvironmentReader& environment,
                                             const std::shared_ptr<const Settings>& previous);

}  // namespace orvantis::standin
