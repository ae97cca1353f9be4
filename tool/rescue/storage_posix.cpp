// The system's files for native builds, in the place of tool/rescue/storage_win32.cpp.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "tool/rescue/storage.h"
#include "tool/shared/base/file_facts.h"
#include "tool/shared/base/tool_error.h"

namespace simhost::tool {
namespace {

[[noreturn]] void failStorage(ExitCode code, const char* what, const std::string& path, int error) {
    throw ToolError(code, std::string("cannot ") + what + " '" + path + "': " + systemReason(error));
}

class PosixStorage final : public Storage {
 public:
    PosixStorage(std::string path, int flags, ExitCode code) : m_path(std::move(path)) {
        m_file = ::open(m_path.c_str(), flags | O_CLOEXEC, 0666);
        if (m_file < 0) {
            failStorage(code, "open", m_path, errno);
        }
    }
    ~PosixStorage() override { (void)::close(m_file); }

    /// No other program that asks may change the file meanwhile.
    void lock() {
        if (::flock(m_file, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
            throw ToolError(kNoOutput, "'" + m_path + "' is in use by another program",
                            "end that program first");
        }
    }

    std::uint64_t size() override {
        struct stat info {};
        if (::fstat(m_file, &info) != 0) {
            failStorage(kFailed, "read", m_path, errno);
        }
        return static_cast<std::uint64_t>(info.st_size);
    }

    std::size_t read(std::uint64_t at, std::span<std::uint8_t> bytes) override {
        std::size_t done = 0;
        while (done < bytes.size()) {
            const ssize_t got =
                ::pread(m_file, bytes.data() + done, bytes.size() - done, static_cast<off_t>(at + done));
            if (got < 0 && errno == EINTR) {
                continue;
            }
            if (got < 0) {
                failStorage(kFailed, "read", m_path, errno);
            }
            if (got == 0) {
                break;
            }
            done += static_cast<std::size_t>(got);
        }
        return done;
    }

    void write(std::uint64_t at, std::span<const std::uint8_t> bytes) override {
        std::size_t done = 0;
        while (done < bytes.size()) {
            const ssize_t put =
                ::pwrite(m_file, bytes.data() + done, bytes.size() - done, static_cast<off_t>(at + done));
            if (put < 0 && errno == EINTR) {
                continue;
            }
            if (put <= 0) {
                failStorage(kNoOutput, "write to", m_path, put < 0 ? errno : ENOSPC);
            }
            done += static_cast<std::size_t>(put);
        }
    }

    void resize(std::uint64_t size) override {
        if (::ftruncate(m_file, static_cast<off_t>(size)) != 0) {
            failStorage(kNoOutput, "change the length of", m_path, errno);
        }
    }

    void flush() override {
        if (::fsync(m_file) != 0) {
            failStorage(kNoOutput, "write to", m_path, errno);
        }
    }

    Extent dataFrom(std::uint64_t at) override {
        const std::uint64_t end = size();
        if (at >= end) {
            return {end, end};
        }
        const off_t data = ::lseek(m_file, static_cast<off_t>(at), SEEK_DATA);
        if (data < 0) {
            return errno == ENXIO ? Extent{end, end} : Extent{at, end};
        }
        const off_t hole = ::lseek(m_file, data, SEEK_HOLE);
        return {static_cast<std::uint64_t>(data), hole < 0 ? end : static_cast<std::uint64_t>(hole)};
    }

    void allowHoles() override {}

 private:
    std::string m_path;
    int m_file;
};

// A name is on the disk when its folder is.
void flushFolderOf(const std::string& path) {
    const std::string folder = std::filesystem::path(path).parent_path().string();
    const int file = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (file >= 0) {
        (void)::fsync(file);
        (void)::close(file);
    }
}

class PosixDisk final : public Disk {
 public:
    bool exists(const std::string& path) override {
        return ::access(path.c_str(), F_OK) == 0 || (errno != ENOENT && errno != ENAMETOOLONG);
    }
    std::unique_ptr<Storage> openToRead(const std::string& path) override {
        return std::make_unique<PosixStorage>(path, O_RDONLY, kFailed);
    }
    std::unique_ptr<Storage> openToChange(const std::string& path) override {
        auto out = std::make_unique<PosixStorage>(path, O_RDWR, kNoOutput);
        out->lock();
        return out;
    }
    std::unique_ptr<Storage> create(const std::string& path) override {
        return std::make_unique<PosixStorage>(path, O_RDWR | O_CREAT | O_EXCL, kNoOutput);
    }
    void publish(const std::string& from, const std::string& to) override {
        // Unlike rename() a link takes no name that is taken. Not every file system has links.
        const bool linked = ::link(from.c_str(), to.c_str()) == 0;
        if (linked) {
            (void)::unlink(from.c_str());
        } else if (errno == EEXIST || exists(to)) {
            failStorage(kNoOutput, "create", to, EEXIST);
        } else if (std::rename(from.c_str(), to.c_str()) != 0) {
            failStorage(kNoOutput, "create", to, errno);
        }
        flushFolderOf(to);
    }
    void remove(const std::string& path) override {
        if (::unlink(path.c_str()) != 0) {
            failStorage(kNoOutput, "remove", path, errno);
        }
        flushFolderOf(path);
    }
};

}  // namespace

Disk& systemDisk() {
    static PosixDisk disk;
    return disk;
}

}  // namespace simhost::tool
