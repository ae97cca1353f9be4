// The console of a log that was built with it, on a console without a window: the child is attached to a
// pseudo console and reads its own screen buffer back.

#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/log_capture.h"
#include "tests/unit/diag/log_test_support.h"

namespace {

using namespace orvantis::test;

// Windows 10 has these; older headers do not.
using CreateConsole = HRESULT(WINAPI*)(COORD, HANDLE, HANDLE, DWORD, void**);
using CloseConsole = void(WINAPI*)(void*);
constexpr DWORD_PTR kPseudoConsoleAttribute = 0x20016;

template <typename Function>
Function systemFunction(const char* name) {
    return reinterpret_cast<Function>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32"), name)));
}

struct Handle {
    Handle() = default;
    ~Handle() { close(); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    void close() {
        if (value != nullptr) {
            (void)CloseHandle(value);
        }
        value = nullptr;
    }
    HANDLE value = nullptr;
};

class PseudoConsole {
 public:
    static bool available() { return systemFunction<CreateConsole>("CreatePseudoConsole") != nullptr; }

    PseudoConsole() {
        Handle input;
        Handle output;
        (void)CreatePipe(&input.value, &m_input.value, nullptr, 0);
        (void)CreatePipe(&m_output.value, &output.value, nullptr, 0);
        (void)systemFunction<CreateConsole>("CreatePseudoConsole")(COORD{80, 25}, input.value, output.value,
                                                                   0, &m_console);
        // What the console draws is of no interest, but it must not wait for a reader.
        m_drain = std::thread([this] {
            char bytes[1024];
            DWORD got = 0;
            while (ReadFile(m_output.value, bytes, sizeof bytes, &got, nullptr) != FALSE && got > 0) {
            }
        });
    }

    ~PseudoConsole() {
        systemFunction<CloseConsole>("ClosePseudoConsole")(m_console);
        m_drain.join();
    }

    PseudoConsole(const PseudoConsole&) = delete;
    PseudoConsole& operator=(const PseudoConsole&) = delete;

    // Runs a program on this console. The exit code; all bits set when it could not be started.
    DWORD run(const std::filesystem::path& program, const std::wstring& argument) {
        SIZE_T size = 0;
        (void)InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        std::vector<std::byte> bytes(size);
        auto* const list = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(bytes.data());
        (void)InitializeProcThreadAttributeList(list, 1, 0, &size);
        (void)UpdateProcThreadAttribute(list, 0, kPseudoConsoleAttribute, m_console, sizeof m_console,
                                        nullptr, nullptr);
        STARTUPINFOEXW startup{};
        startup.StartupInfo.cb = sizeof startup;
        startup.lpAttributeList = list;
        PROCESS_INFORMATION process{};
        std::wstring line = L"\"" + program.wstring() + L"\" \"" + argument + L"\"";
        const BOOL started =
            CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, FALSE,
                           EXTENDED_STARTUPINFO_PRESENT, nullptr, nullptr, &startup.StartupInfo, &process);
        DeleteProcThreadAttributeList(list);
        if (started == FALSE) {
            return static_cast<DWORD>(-1);
        }
        DWORD code = 0;
        (void)WaitForSingleObject(process.hProcess, INFINITE);
        (void)GetExitCodeProcess(process.hProcess, &code);
        (void)CloseHandle(process.hThread);
        (void)CloseHandle(process.hProcess);
        return code;
    }

 private:
    Handle m_input;
    Handle m_output;
    void* m_console = nullptr;
    std::thread m_drain;
};

TEST(Console, HasFiveHundredLinesOfHundredTwentyColumnsWithTheLinesOfTheFile) {
    if (!PseudoConsole::available()) {
        GTEST_SKIP() << "this system has no pseudo consoles";
    }
    LogCapture log;
    const TempFolder folder;
    PseudoConsole console;
    ASSERT_EQ(console.run(siblingProgram("diag_console_child"), (folder / "screen").wstring()), 0u);
    EXPECT_EQ(log.lines(), withOpening(siblingProgram("diag_console_child"),
                                       {"[T] [#] hello console", "[T] [#] second", "[T] [#] Module destroy",
                                        "[T] [#] Log closed"}));

    const std::string screen = readFile(folder / "screen");
    const std::size_t sizeEnd = screen.find('\n');
    ASSERT_EQ(screen.substr(0, sizeEnd), "120 500");
    const std::string cells = screen.substr(sizeEnd + 1);
    // The child read its screen before it ended, so its last two lines are not there.
    std::size_t row = 0;
    std::istringstream file(readFile(log.files().front()));
    std::string line;
    for (int i = 0; i < 4; ++i) {
        ASSERT_TRUE(std::getline(file, line));
        line.pop_back();  // CR
        EXPECT_EQ(cells.substr(row * 120, line.size()), line) << "row " << row;
        row += (line.size() + 119) / 120;
    }
    EXPECT_EQ(cells.find_first_not_of(' ', row * 120), std::string::npos);
}

TEST(Console, IsNotUsedWhileTheLogIsOff) {
    if (!PseudoConsole::available()) {
        GTEST_SKIP() << "this system has no pseudo consoles";
    }
    LogCapture log(LogCapture::Switch::kMissing);
    const TempFolder folder;
    PseudoConsole console;
    ASSERT_EQ(console.run(siblingProgram("diag_console_child"), (folder / "screen").wstring()), 0u);
    const std::string screen = readFile(folder / "screen");
    EXPECT_NE(screen.substr(0, screen.find('\n')), "120 500");
    EXPECT_EQ(screen.find_first_not_of(' ', screen.find('\n') + 1), std::string::npos);
}

}  // namespace
