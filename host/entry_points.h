// Types of the two functions that the host calls.
// Windows x64 has one calling convention: no keyword is needed or has an effect there, so none is written.
// No exception may leave either function.

#pragma once

#include <cstdint>

namespace host {

struct imStdParms;

// xImportEntry. `param1` and `param2` are 64 bits whose meaning depends on the selector: an address, or a
// number of which the low 32 bits count. `stdParms` is never null and valid during the call only.
using ImportEntryFn = std::int32_t (*)(std::int32_t selector, imStdParms* stdParms, void* param1,
                                       void* param2);

// Entry of an asynchronous importer. The host calls it from several threads at once. `param` is the address
// of a record, or, for aiFlush and aiClose, the asynchronous importer itself.
using AsyncImportEntryFn = std::int32_t (*)(std::int32_t selector, void* param);

static_assert(sizeof(ImportEntryFn) == 8 && sizeof(AsyncImportEntryFn) == 8);

}  // namespace host
