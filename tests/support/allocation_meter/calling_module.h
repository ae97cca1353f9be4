// Tells whose allocation one is, by where operator new returns to.
#pragma once

namespace orvantis::test {

/// The module that holds this address is the one to look for.
void watchModuleOf(const void* address);

/// Whether the code at `caller` belongs to the watched module, or is the C++ library working for it. True for
/// every caller as long as no module is watched.
bool isForWatchedModule(const void* caller) noexcept;

}  // namespace orvantis::test
