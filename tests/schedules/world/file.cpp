// In place of fileio/win_file_posix.cpp: a file in memory, whose one position two threads must not use at
// once, which the watch over races finds.
#include <algorithm>
#include <cstring>

#include "fileio/win_file.h"
#include "tests/schedules/scheduler/races.h"
#include "tests/schedules/world/clip.h"

namespace fileio {

namespace {

struct Handle {
    std::int64_t position = 0;
};

void* invalidHandle() noexcept {
    return reinterpret_cast<void*>(std::intptr_t{-1});
}

/// The call is the only one on the file, or the schedule ends.
std::int64_t& positionOf(void* handle) {
    auto& position = static_cast<Handle*>(handle)->position;
    schedules::races::access(&position, sizeof position, true, __builtin_return_address(0));
    return position;
}

}  // namespace

WinFile::WinFile() noexcept : m_handle(invalidHandle()), m_isOpen(false) {}

WinFile::~WinFile() {
    WinFile::close();
}

bool WinFile::open(const char* /*utf8Path*/, int /*mode*/) {
    close();
    m_handle = new Handle;
    m_isOpen = true;
    return true;
}

bool WinFile::open(const char16_t* /*path*/, int mode) {
    return open("", mode);
}

void WinFile::close() {
    if (m_isOpen) {
        delete static_cast<Handle*>(m_handle);
    }
    m_handle = invalidHandle();
    m_isOpen = false;
}

std::int64_t WinFile::size() {
    return m_isOpen ? static_cast<std::int64_t>(schedules::world::clipBytes().size()) : 0;
}

std::int64_t WinFile::tell() {
    return m_isOpen ? positionOf(m_handle) : 0;
}

bool WinFile::seek(std::int64_t offset) {
    if (m_isOpen) {
        positionOf(m_handle) = offset;
    }
    return m_isOpen;
}

std::uint64_t WinFile::read(void* buffer, std::uint64_t count) {
    if (!m_isOpen) {
        return 0;
    }
    std::int64_t& position = positionOf(m_handle);
    const auto& bytes = schedules::world::clipBytes();
    const auto begin = std::min(static_cast<std::uint64_t>(position), std::uint64_t{bytes.size()});
    const std::uint64_t got = std::min(count, bytes.size() - begin);
    schedules::races::access(buffer, got, true, __builtin_return_address(0));
    std::memcpy(buffer, bytes.data() + begin, got);
    position += static_cast<std::int64_t>(got);
    return got;
}

std::uint64_t WinFile::write(const void* /*buffer*/, std::uint64_t /*count*/) {
    return 0;
}

}  // namespace fileio
