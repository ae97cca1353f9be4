#include "avi/file_window.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <limits>

namespace orvantis {

namespace {
// Each way forward through the file needs at most one refill per window length. The headers are gone through
// twice (walk, then contents), and a damaged file may jump back a few times.
constexpr std::uint64_t kSpareRefills = 2048;
constexpr std::uint64_t kPasses = 2;
}  // namespace

void FileWindow::attach(fileio::File& file, std::uint64_t fileSize) noexcept {
    m_file = &file;
    m_windowed = true;
    m_fileSize = fileSize;
    m_refillsLeft = kPasses * (fileSize / kWindowBytes) + kSpareRefills;
    m_first.count = 0;
    m_second.count = 0;
    m_troubleStart = std::numeric_limits<std::uint64_t>::max();
    m_troubleEnd = 0;
}

void FileWindow::release() noexcept {
    m_windowed = false;
    m_first = Window{};
    m_second = Window{};
}

const std::byte* FileWindow::Window::find(std::uint64_t at, std::uint64_t length) const noexcept {
    return isInWindow(at, length, position, count) ? bytes.get() + (at - position) : nullptr;
}

bool FileWindow::refill(Window& window, std::uint64_t position) noexcept {
    --m_refillsLeft;
    window.count = 0;
    try {
        if (!window.bytes) {
            window.bytes = std::make_unique_for_overwrite<std::byte[]>(kWindowBytes);
        }
        if (!m_file->seek(static_cast<std::int64_t>(position))) {
            return false;
        }
        window.count = static_cast<std::size_t>(m_file->read(window.bytes.get(), kWindowBytes));
    } catch (const std::exception&) {
        return false;
    }
    window.position = position;
    return true;
}

bool FileWindow::readSmall(std::uint64_t position, void* destination, std::size_t count) noexcept {
    if (count == 0) {
        return true;
    }
    const std::byte* found = m_first.find(position, count);
    if (found == nullptr) {
        found = m_second.find(position, count);
    }
    if (found == nullptr && m_windowed && !meetsTrouble(position)) {
        if (m_refillsLeft == 0) {
            return false;
        }
        Window& window = m_first.count == 0 ? m_first : m_second;
        if (refill(window, position)) {
            found = window.find(position, count);
        }
        if (found == nullptr) {
            if (!holds(position, count)) {
                return false;  // the end of the file is no trouble
            }
            noteTrouble(position);
        }
    }
    if (found == nullptr) {
        return holds(position, count) && readExactly(position, destination, count);
    }
    std::memcpy(destination, found, count);
    return true;
}

// The trouble is somewhere in the window that could not be filled. Asking for so much there again, for each
// header on the way, would have a failing disk try its bad sector again and again.
bool FileWindow::meetsTrouble(std::uint64_t position) const noexcept {
    return position < m_troubleEnd && m_troubleStart < kWindowBytes + position;
}

void FileWindow::noteTrouble(std::uint64_t position) noexcept {
    m_troubleStart = std::min(m_troubleStart, position);
    m_troubleEnd = std::max(m_troubleEnd, position + kWindowBytes);
}

bool FileWindow::readExactly(std::uint64_t position, void* destination, std::uint64_t count) noexcept {
    try {
        return m_file->seek(static_cast<std::int64_t>(position)) && m_file->read(destination, count) == count;
    } catch (const std::exception&) {
        return false;
    }
}

bool FileWindow::readBulk(std::uint64_t position, void* destination, std::uint64_t count) noexcept {
    if (!holds(position, count)) {
        return false;
    }
    if (count == 0) {
        return true;
    }
    const std::byte* found = m_first.find(position, count);
    if (found == nullptr) {
        found = m_second.find(position, count);
    }
    if (found != nullptr) {
        std::memcpy(destination, found, static_cast<std::size_t>(count));
        return true;
    }
    return readExactly(position, destination, count);
}

}  // namespace orvantis
