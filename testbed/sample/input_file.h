// A file that is read at given places. Others may read, write, rename and delete it meanwhile: an importer is
// a guest on its user's disk. One owner; readAt may be called from several threads at once.
#pragma once

#include <cstddef>
#include <cstdint>

namespace sample {

class InputFile {
 public:
    InputFile() = default;
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    ~InputFile() { close(); }

    /// `path` is NUL-terminated. False when there is no such file, or none that may be read; closes the
    /// former file.
    bool open(const char16_t* path);
    void close() noexcept;
    bool isOpen() const noexcept { return m_handle != kNone; }
    /// The system's handle as the host carries it; all bits set when closed.
    std::uint64_t handle() const noexcept { return m_handle; }
    std::uint64_t size() const;
    /// False unless all `bytes` bytes at `offset` could be read.
    bool readAt(std::uint64_t offset, void* to, std::size_t bytes) const;

 private:
    static constexpr std::uint64_t kNone = ~std::uint64_t{0};
    std::uint64_t m_handle = kNone;
};

}  // namespace sample
