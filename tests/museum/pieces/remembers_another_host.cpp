// Keeps a suite when it refuses to start, and is never unloaded: under the next host it gives back what it
// got from another one. A host that stays the same sees nothing of it.
#include <atomic>
#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

#include "tests/museum/piece.h"

std::int32_t piece::answer(const Call& call) {
    static std::atomic<bool> held{false};
    const host::SPBasicSuite* const basic = call.basic();
    const auto give = [&] { (void)basic->ReleaseSuite(host::kErrorSuiteName, host::kErrorSuiteVersion); };
    if (call.is(host::imInit)) {
        const auto* const self = reinterpret_cast<const char*>(&piece::answer);
#ifdef _WIN32
        HMODULE module = nullptr;
        (void)GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN, self,
                                 &module);
#else
        Dl_info info{};
        (void)dladdr(self, &info);
        (void)dlopen(info.dli_fname, RTLD_NOW | RTLD_NODELETE);
#endif
        const void* suite = nullptr;
        const auto result = basic->AcquireSuite(host::kErrorSuiteName, host::kErrorSuiteVersion, &suite);
        if (held.exchange(result == 0)) {
            give();
        }
        if (!sample::HeldSuite<host::TimeSuite>(basic, host::kTimeSuiteName, host::kTimeSuiteVersion)) {
            return host::imOtherErr;
        }
    } else if (call.is(host::imShutdown) && held.exchange(false)) {
        give();
    }
    return call.correct();
}
