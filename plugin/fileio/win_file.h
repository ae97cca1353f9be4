// A file over a Win32 handle. Needs no Windows header: a HANDLE is a void*.
#pragma once

#include "fileio/file.h"

namespace fileio {

class WinFile final : public File {
 public:
    WinFile() noexcept;
    ~WinFile() override;

    bool open(const char* utf8Path, int mode) override;
    /// The same with the host's own UTF-16 path (NUL-terminated), without conversion.
    bool open(const char16_t* path, int mode);
    void close() override;
    std::int64_t size() override;
    std::int64_t tell() override;
    bool seek(std::int64_t offset) override;
    std::uint64_t read(void* buffer, std::uint64_t count) override;
    std::uint64_t write(const void* buffer, std::uint64_t count) override;

    /// The OS handle, which the host is told on open; all bits set when closed. Stays owned by this object.
    void* osHandle() const noexcept { return m_handle; }
    /// For tests: who reads through an importer's file has opened it.
    bool isOpen() const noexcept { return m_isOpen; }

 private:
    void* m_handle;  ///< INVALID_HANDLE_VALUE when closed
    bool m_isOpen;
};

}  // namespace fileio
