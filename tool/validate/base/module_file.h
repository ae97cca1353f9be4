// The module's file, read without loading it. Main thread only.
#pragma once

#include "tool/shared/base/pe_file.h"
#include "tool/validate/base/trial.h"

namespace simhost::tool::validate {

/// Throws Skipped when the module is none of Windows, or larger than any.
PeFile moduleFile(const Trial& trial);

}  // namespace simhost::tool::validate
