// The only door to the disk: an open file with one position, 64-bit offsets and no lock. Two threads must not
// use one object at once; their callers serialise them. The plain operations never throw.
#pragma once

#include <cstdint>

namespace fileio {

/// Bit flags of open()'s `mode`.
enum OpenMode : int {
    kOpenRead = 1,        ///< GENERIC_READ; existing files only unless kOpenWrite is set too
    kOpenWrite = 2,       ///< GENERIC_WRITE; creates, and truncates an existing file
    kOpenUnbuffered = 4,  ///< past the system's cache
    kOpenShareRead = 8,   ///< others may read meanwhile; without it nobody may open the file
};

class File {
 public:
    File() = default;
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    virtual ~File() = default;

    /// Opens `utf8Path` (NUL-terminated) with OpenMode flags; an open file is closed first. False on failure.
    [[nodiscard]] virtual bool open(const char* utf8Path, int mode) = 0;
    /// Harmless on a closed file.
    virtual void close() = 0;
    /// Length in bytes.
    [[nodiscard]] virtual std::int64_t size() = 0;
    /// Current position; 0 if it cannot be told.
    [[nodiscard]] virtual std::int64_t tell() = 0;
    /// Absolute position from the start. Past the end succeeds; reading there gives 0 bytes.
    [[nodiscard]] virtual bool seek(std::int64_t offset) = 0;
    /// Bytes really read; `count` is truncated to 32 bits. A short count means end of file or a failure.
    [[nodiscard]] virtual std::uint64_t read(void* buffer, std::uint64_t count) = 0;
    /// Bytes really written; `count` is truncated to 32 bits.
    [[nodiscard]] virtual std::uint64_t write(const void* buffer, std::uint64_t count) = 0;
    // What callers that open past the system's cache (kOpenUnbuffered) have to keep to. Clips are read
    // through it, so that nobody asks today; a file that is opened so must say it.
    virtual std::uint64_t alignment();  ///< of buffers and positions in bytes: 4096
    virtual std::uint64_t blockSize();  ///< of counts in bytes: 4096
    /// Writes at `offset` and goes back to where the position was. Bytes written; 0 when the seek is refused.
    /// The plug-in writes to no clip; tests make their large files by it.
    [[nodiscard]] virtual std::uint64_t writeAt(const void* buffer, std::uint64_t count, std::int64_t offset);

    /// Reads exactly `count` bytes or throws ReadError.
    void readExact(void* buffer, std::uint64_t count);
    /// Moves to `offset` or throws SeekError.
    void seekTo(std::int64_t offset);
};

}  // namespace fileio
