// The asynchronous importer's side of the host interface.
#pragma once

#include <cstdint>

#include "host/records.h"
#include "host/result_codes.h"
#include "host/std_parms.h"

namespace orvantis {

/// imCreateAsyncImporter: a second importer on the file of the record's synchronous one. On success the
/// record carries the entry function and the importer. imNoErr, imBadFile, or the analysis' result code; may
/// throw. Host thread.
host::ImporterResult createAsyncImporter(const host::imStdParms* stdParms,
                                         host::imAsyncImporterCreationRec& record);

/// The entry given to the host: re-entrant, any host thread. Asynchronous result codes; 99 after an escaped
/// exception.
std::int32_t xAsyncImportEntry(std::int32_t selector, void* record);  // NOLINT(readability-identifier-naming)

}  // namespace orvantis
