// In place of plugin/importer/system_threads.h where schedules are explored: that very header, as Windows
// sees it, so that system_threads_win32.cpp runs, on the locks of seam/windows.h.
#pragma once

#include <cstdint>

#define _WIN32 1  // NOLINT: what the header asks for
#include "plugin/importer/system_threads.h"
#undef _WIN32
