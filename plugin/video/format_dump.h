// The diagnostic listing at every imInit, on the host's thread: what the host says of its formats, what the
// codec library says of its types, and both tables.
#pragma once

#include "host/std_parms.h"

namespace orvantis {

/// Writes the diagnostic listing of host formats, library types and both tables to the log; stores nothing.
/// A refused image processing suite, a failing codec library and a lack of memory end the listing, and that
/// is all.
void dumpFormatTables(const host::SPBasicSuite* basicSuite) noexcept;

}  // namespace orvantis
