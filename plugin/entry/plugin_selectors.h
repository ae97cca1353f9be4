// The selectors that concern the plug-in as a whole rather than one file. Each may throw, which the entry
// guard answers. Host threads.
#pragma once

#include <cstdint>

#include "host/records.h"
#include "host/std_parms.h"

namespace orvantis {

/// imInit: takes the error suite, builds and dumps the format tables, registers the importer's priority.
std::int32_t init(const host::imStdParms* stdParms, host::imImportInfoRec& record);
/// imShutdown.
std::int32_t shutdown();
/// imGetIndFormat: the one file format at index 0, imBadFormatIndex behind it, where the record is not
/// needed.
std::int32_t getIndFormat(std::uint32_t index, host::imIndFormatRec* formatRecord);
/// imGetSubTypeNames: the coded types as one array in host memory, stored through `descriptions`; the host
/// frees it.
std::int32_t getSubTypeNames(const host::imStdParms* stdParms, std::uint32_t fileType,
                             host::imSubTypeDescriptionRec** descriptions);

}  // namespace orvantis
