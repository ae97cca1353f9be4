// A small importer that is complete and correct: video and sound of the format in plain_clip.h, synchronously
// and asynchronously. Made to be read and copied: `importer_host validate` has nothing to say against it at
// its highest level.
#pragma once

#include <cstdint>

#include "host/entry_points.h"
#include "host/std_parms.h"

// The entry point is the one thing that a module shows of itself.
#ifdef _WIN32
#define SAMPLE_EXPORT extern "C" __declspec(dllexport)
#else
#define SAMPLE_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace sample {

/// What xImportEntry answers: all selectors. No exception leaves.
std::int32_t importEntry(std::int32_t selector, host::imStdParms* parms, void* param1, void* param2) noexcept;

/// The same of the asynchronous importers.
std::int32_t asyncEntry(std::int32_t selector, void* param) noexcept;

}  // namespace sample
