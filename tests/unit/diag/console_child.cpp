// Logs with the console switched on, with the log redirection of the test that started it. On Windows the
// process must have a console; what then stands in its screen buffer is written to the file named on the
// command line, as "<columns> <rows>\n<characters>".

#ifdef _WIN32
#include <windows.h>
#endif

#include <string>

#include "diag/format.h"
#include "diag/log.h"
#include "tests/support/log_redirection.h"
#include "tests/support/temp_folder.h"

namespace {

#ifdef _WIN32
// A fresh process has a console's handles as its own; one that was started through pipes has those instead.
void useConsoleForOutput() {
    (void)SetStdHandle(STD_OUTPUT_HANDLE,
                       CreateFileA("CONOUT$", GENERIC_READ | GENERIC_WRITE,
                                   FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
}

void writeScreen(const char* path) {
    HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    CONSOLE_SCREEN_BUFFER_INFO info{};
    (void)GetConsoleScreenBufferInfo(output, &info);
    std::string cells(20u * static_cast<unsigned>(info.dwSize.X), '\0');
    DWORD read = 0;
    (void)ReadConsoleOutputCharacterA(output, cells.data(), static_cast<DWORD>(cells.size()), COORD{0, 0},
                                      &read);
    cells.resize(read);
    orvantis::test::writeFile(
        path, orvantis::formatString("%d %d\n", int{info.dwSize.X}, int{info.dwSize.Y}) + cells);
}
#endif

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        return 2;
    }
#ifdef _WIN32
    useConsoleForOutput();
#endif
    orvantis::test::LogRedirection::inherit();
    orvantis::startModuleLog();
    orvantis::readLogSwitch();
    orvantis::logMessage("hello %s", "console");
    orvantis::logMessage("second");
#ifdef _WIN32
    writeScreen(argv[1]);
#else
    (void)argv;
#endif
    return 0;
}
