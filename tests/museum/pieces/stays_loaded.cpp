// Cannot be unloaded any more once it was started.
#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    const auto* const self = reinterpret_cast<const char*>(&piece::answer);
    if (call.is(host::imInit)) {
#ifdef _WIN32
        HMODULE module = nullptr;
        (void)GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN, self,
                                 &module);
#else
        Dl_info info{};
        (void)dladdr(self, &info);
        (void)dlopen(info.dli_fname, RTLD_NOW | RTLD_NODELETE);
#endif
    }
    return call.correct();
}
