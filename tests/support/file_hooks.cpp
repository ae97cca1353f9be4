// See file_hooks.h.

#include "tests/support/file_hooks.h"

#include <cstdint>
#include <string>

#include "tests/support/environment.h"

namespace orvantis::test {

InstalledFileHooks::InstalledFileHooks() {
    setEnvironment(kFileHooksVariable, std::to_string(reinterpret_cast<std::uintptr_t>(&m_hooks)));
}

InstalledFileHooks::~InstalledFileHooks() {
    unsetEnvironment(kFileHooksVariable);
}

}  // namespace orvantis::test
