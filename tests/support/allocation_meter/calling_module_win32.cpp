// See calling_module.h. On Windows each module has operators of its own, so no other's ever come here.
#include <stdexcept>

#include "tests/support/allocation_meter/calling_module.h"

namespace orvantis::test {

void watchModuleOf(const void* /*address*/) {
    throw std::logic_error("a module's allocations cannot be told on Windows");
}

bool isForWatchedModule(const void* /*caller*/) noexcept {
    return true;
}

}  // namespace orvantis::test
