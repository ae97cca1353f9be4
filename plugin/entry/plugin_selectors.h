// The selectors that concern the plug-in as a whole rather than one file. Each may throw, which the entry
// guard answers. Host threads.
#pragma once

#include <cstdint>

#include "host/records.h"
#include "host/result_codes.h"
#include "host/std_parms.h"

namespace orvantis {

/// imInit: takes the error suite, builds and dumps the format tables, registers the importer's priority.
host::ImporterResult init(const host::imStdParms* stdParms, host::imImportInfoRec& record);
/// imShutdown.
host::ImporterResult shutdown();
/// imGetIndFormat: the one file format at index 0, imBadFormatIndex behind it, where the record is not
/// needed.
host::ImporterResult getIndFormat(std::uint32_t index, host::imIndFormatRec* formatRecord);
/// imGetSubTypeNames: the coded types as one array in host memory, stored through `descriptions`; the host
/// frees it.
host::ImporterResult getSubTypeNames(const host::imStdParms* stdParms, std::uint32_t fileType,
                                     host::imSubTypeDescriptionRec** descriptions);

}  // namespace orvantis
