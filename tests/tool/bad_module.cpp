// An importer that is bad in ways that end or stop a process: imGetSupports8 writes to address 8,
// imGetIndFormat never returns, imQuietFile ends the process, and imOpenFile8 aborts it.
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "host/std_parms.h"

#ifdef _WIN32
#define EXPORTED extern "C" __declspec(dllexport)
#else
#define EXPORTED extern "C" __attribute__((visibility("default")))
#endif

// Not a constant: compilers refuse to write to one.
static volatile std::uintptr_t nowhere = 8;

EXPORTED std::int32_t xImportEntry(std::int32_t selector, host::imStdParms*, void*, void*) {
    switch (selector) {
        case 0:  // imInit
        case 1:  // imShutdown
            return 0;
        case 36:  // imGetSupports8
            (void)std::fputs("the module says good-bye\n", stderr);
            (void)std::fflush(stderr);
            *reinterpret_cast<volatile int*>(nowhere) = 1;
            return 101;
        case 14: {  // imGetIndFormat
            static std::atomic<bool> never{false};
            while (!never) {
                std::this_thread::yield();
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
