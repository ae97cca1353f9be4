// Files for the tests of the AVI reader: one that counts what it is asked for, one that fails on cue.
#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <stdexcept>
#include <utility>
#include <vector>

#include "tests/support/avi_builder/memory_file.h"

namespace orvantis::test {

/// Counts calls and bytes.
class CountingFile : public MemoryFile {
 public:
    using MemoryFile::MemoryFile;

    std::int64_t size() override {
        ++sizes;
        return MemoryFile::size();
    }
    bool seek(std::int64_t offset) override {
        ++seeks;
        return MemoryFile::seek(offset);
    }
    std::uint64_t read(void* buffer, std::uint64_t count) override {
        ++reads;
        const std::uint64_t given = MemoryFile::read(buffer, count);
        bytesRead += given;
        return given;
    }

    int sizes = 0;
    int seeks = 0;
    int reads = 0;
    std::uint64_t bytesRead = 0;
};

/// Operation number `failAt` (seeks and reads, counted from 0) fails in the way that `fault` says; with
/// `fromThere` all later ones fail too.
class FaultyFile : public MemoryFile {
 public:
    enum class Fault {
        shortRead,   ///< half of the bytes come, the position moves by those; seeks are not affected
        emptyRead,   ///< no byte comes; seeks are not affected
        refuseSeek,  ///< the position stays; reads are not affected
        throwing,    ///< both throw
    };

    FaultyFile(std::vector<std::uint8_t> bytes, Fault fault, int failAt, bool fromThere)
        : MemoryFile(std::move(bytes)), m_fault(fault), m_failAt(failAt), m_fromThere(fromThere) {}

    bool seek(std::int64_t offset) override {
        if (isDue()) {
            if (m_fault == Fault::throwing) throw std::runtime_error("seek");
            if (m_fault == Fault::refuseSeek) return false;
        }
        return MemoryFile::seek(offset);
    }
    std::uint64_t read(void* buffer, std::uint64_t count) override {
        if (isDue()) {
            if (m_fault == Fault::throwing) throw std::runtime_error("read");
            if (m_fault == Fault::emptyRead) return 0;
            if (m_fault == Fault::shortRead) return MemoryFile::read(buffer, count / 2);
        }
        return MemoryFile::read(buffer, count);
    }

    int operations() const noexcept { return m_operations; }

 private:
    bool isDue() noexcept {
        const int number = m_operations++;
        return number == m_failAt || (m_fromThere && number > m_failAt);
    }

    Fault m_fault;
    int m_failAt;
    bool m_fromThere;
    int m_operations = 0;
};

/// A file of any length that holds pieces of bytes at some positions and zeros everywhere else.
class SparseMemoryFile : public MemoryFile {
 public:
    explicit SparseMemoryFile(std::int64_t size) : MemoryFile({}), m_size(size) {}

    void put(std::uint64_t position, std::vector<std::uint8_t> bytes) {
        m_pieces[position] = std::move(bytes);
    }

    std::int64_t size() override { return m_size; }
    std::uint64_t read(void* buffer, std::uint64_t count) override {
        const auto at = static_cast<std::uint64_t>(tell());
        const auto length = static_cast<std::uint64_t>(m_size);
        if (at >= length) return 0;
        const std::uint64_t given = std::min<std::uint64_t>(static_cast<std::uint32_t>(count), length - at);
        auto* const out = static_cast<std::uint8_t*>(buffer);
        std::fill_n(out, given, std::uint8_t{0});
        for (const auto& [position, bytes] : m_pieces) {
            const std::uint64_t from = std::max(position, at);
            const std::uint64_t to = std::min(position + bytes.size(), at + given);
            if (from < to) std::copy_n(bytes.data() + (from - position), to - from, out + (from - at));
        }
        seek(static_cast<std::int64_t>(at + given));
        bytesRead += given;
        ++reads;
        return given;
    }

    int reads = 0;
    std::uint64_t bytesRead = 0;

 private:
    std::int64_t m_size;
    std::map<std::uint64_t, std::vector<std::uint8_t>> m_pieces;
};

}  // namespace orvantis::test
