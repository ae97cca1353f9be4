// Loads a library as a host does, and says whether that worked. Used by the tests of the installer: a host
// that has the plug-in loaded is what keeps its file locked.
//
//   load_plugin FILE          prints "loaded", or "error N" with the system's code; result 0 or 1
//   load_plugin FILE --hold   the same, and keeps the library until standard input ends
#include <windows.h>

#include <shellapi.h>

#include <cstdio>
#include <cwchar>

int main() {
    int count = 0;
    wchar_t** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    if (arguments == nullptr || count < 2) {
        return 2;
    }

    const HMODULE library = LoadLibraryW(arguments[1]);
    if (library == nullptr || GetProcAddress(library, "xImportEntry") == nullptr) {
        std::printf("error %lu\n", GetLastError());
        return 1;
    }
    std::puts("loaded");
    (void)std::fflush(stdout);
    if (count > 2 && std::wcscmp(arguments[2], L"--hold") == 0) {
        while (std::getchar() != EOF) {
        }
    }
    FreeLibrary(library);
    LocalFree(static_cast<void*>(arguments));
    return 0;
}
