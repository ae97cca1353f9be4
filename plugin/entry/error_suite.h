// The process-wide error suite: how the plug-in tells the user that a call ended in an exception. Held from
// imInit to imShutdown; written by those two only.
#pragma once

#include "host/suites.h"
#include "suites/suite_ref.h"

namespace orvantis {

/// Acquires the suite anew and then gives back one held before, so that a second imInit leaves one reference.
void holdErrorSuite(const host::SPBasicSuite* basicSuite);
void dropErrorSuite();
/// Posts an error event with UTF-8 texts; does nothing when no suite is held. Throws what the suite's
/// accessor throws.
void postErrorEvent(const char* title, const char* description);

}  // namespace orvantis
