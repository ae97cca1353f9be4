// For pieces whose asynchronous importer is the one that breaks the rule.
#pragma once

#include "tests/museum/piece.h"

namespace piece {

/// What the sample answers, with `entry` in the place of its asynchronous importer's.
inline std::int32_t correctThrough(const Call& call, host::AsyncImportEntryFn entry) {
    const std::int32_t result = call.correct();
    if (call.is(host::imCreateAsyncImporter) && result == host::imNoErr) {
        static_cast<host::imAsyncImporterCreationRec*>(call.param1)->outAsyncEntry = entry;
    }
    return result;
}

}  // namespace piece
