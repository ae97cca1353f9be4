// Files in memory for the rescue: one that can be changed, one that is another's beginning, and a disk that
// forgets what was not flushed when it crashes. One thread at a time.
#pragma once

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tool/rescue/storage.h"
#include "tool/shared/base/tool_error.h"

namespace simhost::tool {

using TestBytes = std::vector<std::uint8_t>;

class MemoryStorage : public Storage {
 public:
    explicit MemoryStorage(TestBytes& bytes) : m_bytes(bytes) {}

    std::uint64_t size() override { return m_bytes.size(); }
    std::size_t read(std::uint64_t at, std::span<std::uint8_t> bytes) override {
        if (at >= m_bytes.size()) {
            return 0;
        }
        const std::size_t count =
            std::min<std::size_t>(bytes.size(), m_bytes.size() - static_cast<std::size_t>(at));
        bytesRead += count;
        if (at < m_badEnd && at + count > m_badBegin) {
            throw ToolError(kFailed, "bad sector");
        }
        std::memcpy(bytes.data(), m_bytes.data() + at, count);
        return count;
    }
    void write(std::uint64_t at, std::span<const std::uint8_t> bytes) override {
        if (at + bytes.size() > m_bytes.size()) {
            m_bytes.resize(static_cast<std::size_t>(at + bytes.size()));
        }
        std::copy(bytes.begin(), bytes.end(), m_bytes.begin() + static_cast<std::ptrdiff_t>(at));
        ++writes;
    }
    void resize(std::uint64_t size) override { m_bytes.resize(static_cast<std::size_t>(size)); }
    void flush() override {}
    Extent dataFrom(std::uint64_t at) override { return {std::min<std::uint64_t>(at, size()), size()}; }
    void allowHoles() override {}

    /// Reads that touch these bytes fail.
    void makeUnreadable(std::uint64_t begin, std::uint64_t end) {
        m_badBegin = begin;
        m_badEnd = end;
    }

    int writes = 0;
    std::uint64_t bytesRead = 0;

 private:
    TestBytes& m_bytes;
    std::uint64_t m_badBegin = 0;
    std::uint64_t m_badEnd = 0;
};

/// Read-only: the first bytes of another file.
class CutStorage final : public Storage {
 public:
    CutStorage(Storage& whole, std::uint64_t size) : m_whole(whole), m_size(size) {}

    std::uint64_t size() override { return m_size; }
    std::size_t read(std::uint64_t at, std::span<std::uint8_t> bytes) override {
        if (at >= m_size) {
            return 0;
        }
        return m_whole.read(
            at, bytes.first(static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), m_size - at))));
    }
    void write(std::uint64_t, std::span<const std::uint8_t>) override { refuse(); }
    void resize(std::uint64_t) override { refuse(); }
    void flush() override { refuse(); }
    Extent dataFrom(std::uint64_t at) override {
        const Extent data = m_whole.dataFrom(at);
        return {std::min(data.begin, m_size), std::min(data.end, m_size)};
    }
    void allowHoles() override { refuse(); }

 private:
    [[noreturn]] static void refuse() { throw ToolError(kNoOutput, "this file is only to be read"); }

    Storage& m_whole;
    std::uint64_t m_size;
};

}  // namespace simhost::tool
