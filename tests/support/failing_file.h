// Wraps a fileio::File and lets one of its operations go wrong, or all from one on: the same scenario run
// with a fault at operation 1, 2, 3, ... until it passes shows that every failure is handled. One thread at a
// time.
#pragma once

#include <cstdint>
#include <new>
#include <stdexcept>

#include "fileio/file.h"

namespace orvantis::test {

enum class FileFault {
    kFail,           ///< reads and writes give 0 bytes, seeks are refused, size and tell give 0
    kShortRead,      ///< reads give half of what they could (at least one byte less); all else works
    kThrowRuntime,   ///< throws std::runtime_error("injected fault"), which no real file does
    kThrowBadAlloc,  ///< throws std::bad_alloc
};

/// Which operations are counted for the place of the fault.
enum class FileOperation { kAny, kRead, kSeek, kSize, kTell, kWrite };

class FailingFile final : public fileio::File {
 public:
    /// `file` must outlive this object. Without a plan everything passes through.
    explicit FailingFile(fileio::File& file) : m_file(file) {}

    /// The `number`-th operation (from 1) of kind `operation` meets `fault`; with `fromThereOn` all later
    /// ones too.
    void plan(FileFault fault, std::uint64_t number, FileOperation operation = FileOperation::kAny,
              bool fromThereOn = false) {
        m_fault = fault;
        m_number = number;
        m_operation = operation;
        m_fromThereOn = fromThereOn;
        m_seen = 0;
        m_faults = 0;
    }

    /// Reads that touch the `count` bytes from `position` on give nothing, like those of a bad sector. 0
    /// bytes: none is bad.
    void makeUnreadable(std::uint64_t position, std::uint64_t count) {
        m_badStart = position;
        m_badEnd = position + count;
    }

    /// Operations of the planned kind so far.
    std::uint64_t seen() const noexcept { return m_seen; }
    /// Faults so far; 0 tells that the scenario ended before the planned place.
    std::uint64_t faults() const noexcept { return m_faults; }

    bool open(const char* utf8Path, int mode) override { return m_file.open(utf8Path, mode); }
    void close() override { m_file.close(); }
    std::int64_t size() override { return fails(FileOperation::kSize) ? 0 : m_file.size(); }
    std::int64_t tell() override { return fails(FileOperation::kTell) ? 0 : m_file.tell(); }
    bool seek(std::int64_t offset) override { return !fails(FileOperation::kSeek) && m_file.seek(offset); }

    std::uint64_t read(void* buffer, std::uint64_t count) override {
        if (m_badStart < m_badEnd) {
            const auto from = static_cast<std::uint64_t>(m_file.tell());
            if (from < m_badEnd && m_badStart < from + count) {
                ++m_faults;
                return 0;
            }
        }
        if (!meetsFault(FileOperation::kRead)) {
            return m_file.read(buffer, count);
        }
        if (m_fault == FileFault::kShortRead) {
            return m_file.read(buffer, count / 2);
        }
        return 0;
    }

    std::uint64_t write(const void* buffer, std::uint64_t count) override {
        return fails(FileOperation::kWrite) ? 0 : m_file.write(buffer, count);
    }

 private:
    bool fails(FileOperation operation) { return meetsFault(operation) && m_fault == FileFault::kFail; }

    bool meetsFault(FileOperation operation) {
        if (m_operation != FileOperation::kAny && m_operation != operation) {
            return false;
        }
        ++m_seen;
        if (m_number == 0 || m_seen < m_number || (m_seen > m_number && !m_fromThereOn)) {
            return false;
        }
        ++m_faults;
        if (m_fault == FileFault::kThrowRuntime) {
            throw std::runtime_error("injected fault");
        }
        if (m_fault == FileFault::kThrowBadAlloc) {
            throw std::bad_alloc();
        }
        return true;
    }

    fileio::File& m_file;
    FileFault m_fault = FileFault::kFail;
    FileOperation m_operation = FileOperation::kAny;
    std::uint64_t m_number = 0;  ///< 0: no fault planned
    bool m_fromThereOn = false;
    std::uint64_t m_seen = 0;
    std::uint64_t m_faults = 0;
    std::uint64_t m_badStart = 0;
    std::uint64_t m_badEnd = 0;
};

}  // namespace orvantis::test
