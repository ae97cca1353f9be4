// Who is at this machine. Implemented by personal_names_win32.cpp and, for native builds, by a twin beside
// it. Main thread only.
#pragma once

#include "tool/collect/mask.h"

namespace simhost::tool {

/// The user's name and home folder in every form that the system has of them, short names and resolved links
/// among them.
PersonalNames personalNames();

}  // namespace simhost::tool
