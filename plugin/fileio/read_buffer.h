// A byte buffer that is lent to read calls again and again: it only grows, and growing neither keeps nor
// clears the contents, because the next read overwrites them anyway.
#pragma once

#include <cstddef>
#include <memory>

namespace fileio {

class ReadBuffer {
 public:
    /// Makes room for `bytes` and returns the start. The contents are indeterminate after growing. Throws
    /// std::bad_alloc, in which case the buffer stays as it was.
    std::byte* ensure(std::size_t bytes) {
        if (bytes > m_capacity) {
            m_data = std::make_unique_for_overwrite<std::byte[]>(bytes);
            m_capacity = bytes;
        }
        return m_data.get();
    }

    std::byte* data() noexcept { return m_data.get(); }
    const std::byte* data() const noexcept { return m_data.get(); }
    std::size_t capacity() const noexcept { return m_capacity; }

 private:
    std::unique_ptr<std::byte[]> m_data;
    std::size_t m_capacity = 0;
};

}  // namespace fileio
