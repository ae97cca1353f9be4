// By functions of ours in the place of those that the plug-in imports. A file that it has left open cannot be
// opened for oneself alone.
#include <windows.h>

#include <atomic>
#include <cstdint>

#include "tool/shared/base/import_patch_win32.h"
#include "tool/shared/base/output_file.h"
#include "tool/soak/session_files.h"

namespace simhost::tool {
// Of one kind.
struct FileOperations {
    std::atomic<std::uint64_t> count = 0;
    std::atomic<std::uint64_t> failAt = 0;
    std::atomic<bool> fromThenOn = false;

    void reset() {
        failAt = 0;
        count = 0;
        fromThenOn = false;
    }
    bool fails() {
        const std::uint64_t number = ++count;
        const std::uint64_t at = failAt;
        return at != 0 && (number == at || (fromThenOn && number > at));
    }
};

namespace {

// The functions carry no context.
FileOperations g_reads;
FileOperations g_seeks;
FileOperations g_opens;

BOOL WINAPI readFile(HANDLE file, LPVOID buffer, DWORD bytes, LPDWORD read, LPOVERLAPPED overlapped) {
    if (g_reads.fails()) {
        SetLastError(ERROR_READ_FAULT);
        return FALSE;
    }
    return ReadFile(file, buffer, bytes, read, overlapped);
}

BOOL WINAPI setFilePointer(HANDLE file, LARGE_INTEGER distance, PLARGE_INTEGER position, DWORD method) {
    // Without a movement it is a question.
    if (method == FILE_BEGIN && g_seeks.fails()) {
        SetLastError(ERROR_SEEK);
        return FALSE;
    }
    return SetFilePointerEx(file, distance, position, method);
}

HANDLE WINAPI createFile(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                         DWORD creation, DWORD attributes, HANDLE like) {
    // The log is no file of the host's.
    if (creation == OPEN_EXISTING && g_opens.fails()) {
        SetLastError(ERROR_ACCESS_DENIED);
        return INVALID_HANDLE_VALUE;
    }
    return CreateFileW(path, access, share, security, creation, attributes, like);
}

template <class Function>
const void* addressOf(Function* function) {
    return reinterpret_cast<const void*>(function);
}

}  // namespace

struct SessionFiles::State {
    explicit State(const void* inPlugin)
        : read(inPlugin, "ReadFile", addressOf(&readFile)),
          seek(inPlugin, "SetFilePointerEx", addressOf(&setFilePointer)),
          open(inPlugin, "CreateFileW", addressOf(&createFile)) {}

    ImportPatch read;
    ImportPatch seek;
    ImportPatch open;
    FileOperations* failing = nullptr;
};

SessionFiles::SessionFiles(const void* inPlugin) : m_state(std::make_unique<State>(inPlugin)) {}

SessionFiles::~SessionFiles() = default;

void SessionFiles::begin() {
    strike({});
}

void SessionFiles::strike(const std::optional<ReadFault>& fault) {
    for (FileOperations* operations : {&g_reads, &g_seeks, &g_opens}) {
        operations->reset();
    }
    m_state->failing = nullptr;
    if (fault) {
        m_state->failing = fault->kind == ReadFault::Kind::kRead   ? &g_reads
                           : fault->kind == ReadFault::Kind::kSeek ? &g_seeks
                                                                   : &g_opens;
        m_state->failing->fromThenOn = fault->fromThenOn;
        m_state->failing->failAt = fault->nth;
    }
}

std::uint64_t SessionFiles::struck() const {
    const FileOperations* operations = m_state->failing;
    if (operations == nullptr || operations->count < operations->failAt) {
        return 0;
    }
    return operations->fromThenOn ? operations->count - operations->failAt + 1 : 1;
}

std::string SessionFiles::heldOf(const std::string& pathUtf8) const {
    const HANDLE alone = CreateFileW(pathFromUtf8(pathUtf8).c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                     FILE_ATTRIBUTE_NORMAL, nullptr);
    if (alone != INVALID_HANDLE_VALUE) {
        (void)CloseHandle(alone);
        return {};
    }
    return GetLastError() == ERROR_SHARING_VIOLATION ? "the file is still open" : std::string();
}

}  // namespace simhost::tool
