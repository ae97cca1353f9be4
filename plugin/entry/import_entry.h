// The plug-in's only export.
#pragma once

#include <cstdint>

#include "diag/compiler.h"
#include "host/std_parms.h"

/// Every call of the host. Returns the host's importer result code; 99 after an escaped standard exception,
/// which is logged and shown to the user. No standard exception leaves. Any host thread.
extern "C" ORVANTIS_EXPORT std::int32_t xImportEntry(std::int32_t selector, host::imStdParms* stdParms,
                                                     void* param1,
                                                     void* param2);  // NOLINT(readability-identifier-naming)
