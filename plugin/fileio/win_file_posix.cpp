// The native twin of fileio/win_file.cpp, for test builds only: the same observable behaviour over a file
// descriptor, share modes between the files of this module included. The handle is the descriptor's number.
// Consults file_hooks_posix.h. FILE_FLAG_NO_BUFFERING has no counterpart here and is ignored.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include "diag/text.h"
#include "fileio/file_hooks_posix.h"
#include "fileio/win_file.h"

namespace fileio {

namespace {

using orvantis::test::FileHooks;

void* invalidHandle() noexcept {
    return reinterpret_cast<void*>(std::intptr_t{-1});
}

int descriptor(void* handle) noexcept {
    return static_cast<int>(reinterpret_cast<std::intptr_t>(handle));
}

// The hooks in force, looked up at each construction of a file. Static destructors may still close files.
std::atomic<FileHooks*> g_hooks = nullptr;

FileHooks* hooks() noexcept {
    return g_hooks.load();
}

void lookUpHooks() noexcept {
    const char* const text = std::getenv(orvantis::test::kFileHooksVariable);
    g_hooks = text == nullptr ? nullptr : reinterpret_cast<FileHooks*>(std::strtoull(text, nullptr, 0));
}

bool injectedFault(orvantis::test::FileOperationHook FileHooks::*kind) noexcept {
    FileHooks* const table = hooks();
    return table != nullptr && (table->*kind).arrives();
}

// What Windows keeps for each open file to judge a further open of the same file.
struct OpenFile {
    int fd;
    dev_t device;
    ino_t inode;
    bool reads;
    bool writes;
    bool sharesReading;
};

std::mutex& openFilesMutex() {
    static std::mutex mutex;
    return mutex;
}

std::vector<OpenFile>& openFiles() {
    static std::vector<OpenFile> files;
    return files;
}

// Sharing is mutual: each side's access must be in the other side's share mode, which never has writing.
bool sharesWithOpenOnes(const OpenFile& wanted) {
    return std::none_of(openFiles().begin(), openFiles().end(), [&wanted](const OpenFile& other) {
        if (other.device != wanted.device || other.inode != wanted.inode) {
            return false;
        }
        return wanted.writes || (wanted.reads && !other.sharesReading) || other.writes ||
               (other.reads && !wanted.sharesReading);
    });
}

// -1 where CreateFileW would fail.
int openDescriptor(const std::string& path, int mode) {
    const bool reads = (mode & kOpenRead) != 0;
    const bool writes = (mode & kOpenWrite) != 0;
    if (!reads && !writes) {
        return -1;  // the creation disposition stays 0, which the system rejects
    }
    int flags = O_CLOEXEC;
    if (writes) {
        flags |= (reads ? O_RDWR : O_WRONLY) | O_CREAT;
    }
    const std::lock_guard lock(openFilesMutex());
    const int fd = ::open(path.c_str(), flags, 0666);
    if (fd < 0) {
        return -1;
    }
    struct stat status {};
    const bool known = ::fstat(fd, &status) == 0 && !S_ISDIR(status.st_mode);
    const OpenFile file{fd, status.st_dev, status.st_ino, reads, writes, (mode & kOpenShareRead) != 0};
    // Only a file that may be opened is truncated.
    if (!known || !sharesWithOpenOnes(file) || (writes && ::ftruncate(fd, 0) != 0)) {
        (void)::close(fd);
        return -1;
    }
    openFiles().push_back(file);
    return fd;
}

void closeDescriptor(int fd) {
    const std::lock_guard lock(openFilesMutex());
    std::vector<OpenFile>& files = openFiles();
    files.erase(
        std::remove_if(files.begin(), files.end(), [fd](const OpenFile& file) { return file.fd == fd; }),
        files.end());
    (void)::close(fd);
    if (FileHooks* const table = hooks(); table != nullptr) {
        ++table->closes;
    }
}

}  // namespace

WinFile::WinFile() noexcept : m_handle(invalidHandle()), m_isOpen(false) {
    lookUpHooks();
}

WinFile::~WinFile() {
    if (m_isOpen) {
        closeDescriptor(descriptor(m_handle));
    }
}

bool WinFile::open(const char* utf8Path, int mode) {
    return open(orvantis::utf16FromUtf8({utf8Path, std::strlen(utf8Path)}).c_str(), mode);
}

bool WinFile::open(const char16_t* path, int mode) {
    if (m_isOpen) {
        close();
    }
    if (injectedFault(&FileHooks::opens)) {
        return false;
    }
    const int fd = openDescriptor(orvantis::utf8FromUtf16(path), mode);
    if (fd < 0) {
        return false;
    }
    if (FileHooks* const table = hooks(); table != nullptr) {
        ++table->opened;
    }
    m_handle = reinterpret_cast<void*>(std::intptr_t{fd});
    m_isOpen = true;
    return true;
}

void WinFile::close() {
    if (m_isOpen) {
        closeDescriptor(descriptor(m_handle));
    }
    m_handle = invalidHandle();
    m_isOpen = false;
}

std::int64_t WinFile::size() {
    struct stat status {};
    if (injectedFault(&FileHooks::sizes) || ::fstat(descriptor(m_handle), &status) != 0) {
        return 0;
    }
    return status.st_size;
}

std::int64_t WinFile::tell() {
    if (injectedFault(&FileHooks::tells)) {
        return 0;
    }
    return std::max<std::int64_t>(::lseek(descriptor(m_handle), 0, SEEK_CUR), 0);
}

bool WinFile::seek(std::int64_t offset) {
    return !injectedFault(&FileHooks::seeks) && ::lseek(descriptor(m_handle), offset, SEEK_SET) >= 0;
}

std::uint64_t WinFile::read(void* buffer, std::uint64_t count) {
    if (injectedFault(&FileHooks::reads)) {
        return 0;
    }
    // One ReadFile takes all of a 32-bit count; one read() stops below 2 GiB.
    const std::uint64_t wanted = static_cast<std::uint32_t>(count);
    if (FileHooks* const table = hooks(); table != nullptr && table->beforeRead) {
        table->beforeRead(wanted);
    }
    std::uint64_t total = 0;
    while (total < wanted) {
        const ssize_t got = ::read(descriptor(m_handle), static_cast<char*>(buffer) + total, wanted - total);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            return 0;
        }
        if (got == 0) {
            break;
        }
        total += static_cast<std::uint64_t>(got);
    }
    if (FileHooks* const table = hooks(); table != nullptr) {
        table->bytesRead += total;
    }
    return total;
}

std::uint64_t WinFile::write(const void* buffer, std::uint64_t count) {
    if (injectedFault(&FileHooks::writes)) {
        return 0;
    }
    const std::uint64_t wanted = static_cast<std::uint32_t>(count);
    std::uint64_t total = 0;
    while (total < wanted) {
        const ssize_t put =
            ::write(descriptor(m_handle), static_cast<const char*>(buffer) + total, wanted - total);
        if (put < 0 && errno == EINTR) {
            continue;
        }
        if (put <= 0) {
            break;
        }
        total += static_cast<std::uint64_t>(put);
    }
    if (FileHooks* const table = hooks(); table != nullptr) {
        table->bytesWritten += total;
    }
    return total;
}

}  // namespace fileio
