// From a selector to its handler: the one place that knows which record each selector carries.
#pragma once

#include <cstdint>

#include "host/result_codes.h"
#include "host/std_parms.h"

namespace orvantis {

/// Logs the call, runs its handler, logs and returns the host's result code. May throw. Any host thread.
host::ImporterResult dispatch(std::int32_t selector, const host::imStdParms* stdParms, void* param1,
                              void* param2);

}  // namespace orvantis
