// What the sound of a file needs of the importer that has it open.
#pragma once

#include "diag/mutex.h"
#include "fileio/file.h"
#include "suites/importer_suites.h"

namespace orvantis {

/// What an AudioInfo may use of the importer that owns it: its open file and its host suites. All outlive it.
struct AudioOwner {
    fileio::File* file;
    Mutex* filePosition;  ///< held from a seek to the end of the read that relies on it
    LazyImporterSuites* suites;
};

}  // namespace orvantis
