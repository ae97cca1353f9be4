// An importer that is bad in ways that end or stop a process: imGetSupports8 writes to address 8,
// imGetIndFormat never returns, imQuietFile ends the process, and imOpenFile8 aborts it. A process that
// starts it more often than 150 times ends: it takes what a process has no more of.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "host/std_parms.h"

#ifdef _WIN32
#define EXPORTED extern "C" __declspec(dllexport)
#else
#define EXPORTED extern "C" __attribute__((visibility("default")))
#endif

static void rememberFor(const char* name, const std::string& value) {
#ifdef _WIN32
    (void)_putenv_s(name, value.c_str());
#else
    (void)setenv(name, value.c_str(), 1);
#endif
}

// Not a constant: compilers refuse to write to one.
static volatile std::uintptr_t nowhere = 8;

EXPORTED std::int32_t xImportEntry(std::int32_t selector, host::imStdParms*, void*, void*) {
    switch (selector) {
        case 0: {  // imInit
            // In the environment, which outlives the module.
            constexpr const char* kStarts = "BAD_MODULE_STARTS";
            const char* const before = std::getenv(kStarts);
            const int starts = 1 + (before == nullptr ? 0 : std::atoi(before));
            if (starts > 150) {
                std::_Exit(8);
            }
            rememberFor(kStarts, std::to_string(starts));
            return 0;
        }
        case 1:  // imShutdown
            return 0;
        case 36:  // imGetSupports8
            (void)std::fputs("the module says good-bye\n", stderr);
            (void)std::fflush(stderr);
            *reinterpret_cast<volatile int*>(nowhere) = 1;
            return 101;
        case 14: {  // imGetIndFormat
            volatile bool never = false;
            while (!never) {
            }
            return 3;
        }
        case 8:  // imQuietFile
            std::_Exit(7);
        case 39:  // imOpenFile8
            std::abort();
        default:
            return 3;
    }
}
