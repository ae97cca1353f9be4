// The files that a rescue reads and writes, behind an interface: what a crash at any moment leaves behind is
// tested with files in memory. Paths are UTF-8. Every failure is a ToolError that names the file: kFailed for
// reading, kNoOutput for the rest. One thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace simhost::tool {

/// Bytes [begin, end) of a file.
struct Extent {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;

    std::uint64_t bytes() const noexcept { return end - begin; }
    bool operator==(const Extent&) const = default;
};

/// An open file.
class Storage {
 public:
    Storage() = default;
    Storage(const Storage&) = delete;
    Storage& operator=(const Storage&) = delete;
    virtual ~Storage() = default;

    virtual std::uint64_t size() = 0;
    /// How many bytes were read: fewer than wanted at the end of the file only.
    virtual std::size_t read(std::uint64_t at, std::span<std::uint8_t> bytes) = 0;
    /// Past the end the file grows.
    virtual void write(std::uint64_t at, std::span<const std::uint8_t> bytes) = 0;
    virtual void resize(std::uint64_t size) = 0;
    /// Comes back when everything written, and the size, is on the disk itself.
    virtual void flush() = 0;
    /// The next stretch that the disk holds, at or behind `at`; what lies before it is zeros that take no
    /// room. Empty and at the file's size when there is none. A system that cannot tell says that there is
    /// data.
    virtual Extent dataFrom(std::uint64_t at) = 0;
    /// Lets stretches that are never written take no room, where the system wants to be asked. Best effort.
    virtual void allowHoles() = 0;
};

/// The folder that the files lie in.
class Disk {
 public:
    Disk() = default;
    Disk(const Disk&) = delete;
    Disk& operator=(const Disk&) = delete;
    virtual ~Disk() = default;

    virtual bool exists(const std::string& path) = 0;
    virtual std::unique_ptr<Storage> openToRead(const std::string& path) = 0;
    /// An existing file, which nobody else may write meanwhile.
    virtual std::unique_ptr<Storage> openToChange(const std::string& path) = 0;
    /// A file that is not there yet.
    virtual std::unique_ptr<Storage> create(const std::string& path) = 0;
    /// Gives a closed file another name, which must not be taken, and comes back when that is on the disk.
    virtual void publish(const std::string& from, const std::string& to) = 0;
    /// Comes back when that is on the disk.
    virtual void remove(const std::string& path) = 0;
};

/// The system's own. Implemented in storage_win32.cpp and storage_posix.cpp.
Disk& systemDisk();

/// All of `bytes`, or a ToolError.
void readAll(Storage& file, std::uint64_t at, std::span<std::uint8_t> bytes);

}  // namespace simhost::tool
