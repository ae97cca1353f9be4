// The native twin of tool/shared/base/library_search_win32.cpp.
#include <dlfcn.h>

#include "tool/shared/base/library_search.h"

namespace simhost::tool {

std::string whyNotLoadable(const std::string& name, const std::string& folderUtf8) {
    void* found = folderUtf8.empty() ? nullptr : ::dlopen((folderUtf8 + "/" + name).c_str(), RTLD_LAZY);
    if (found == nullptr) {
        found = ::dlopen(name.c_str(), RTLD_LAZY);
    }
    if (found == nullptr) {
        const char* reason = ::dlerror();
        return reason == nullptr ? "it cannot be loaded" : reason;
    }
    (void)::dlclose(found);
    return {};
}

}  // namespace simhost::tool
