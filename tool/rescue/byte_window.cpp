#include "tool/rescue/byte_window.h"

#include <algorithm>

#include "tool/shared/base/tool_error.h"

namespace simhost::tool {

std::span<const std::uint8_t> ByteWindow::view(std::uint64_t at, std::size_t count, std::size_t ahead) {
    if (at >= m_size) {
        return {};
    }
    count = static_cast<std::size_t>(std::min<std::uint64_t>(count, m_size - at));
    if (at < m_at || at + count > m_at + m_bytes.size()) {
        fill(at, static_cast<std::size_t>(std::min<std::uint64_t>(std::max(count, ahead), m_size - at)));
    }
    return std::span<const std::uint8_t>(m_bytes).subspan(static_cast<std::size_t>(at - m_at), count);
}

void ByteWindow::fill(std::uint64_t at, std::size_t count) {
    constexpr std::size_t kSector = 4096;
    m_at = at;
    m_unreadable = false;
    m_bytes.resize(count);
    const std::span<std::uint8_t> all(m_bytes);
    try {
        const std::size_t got = m_file.read(at, all);
        std::fill(m_bytes.begin() + static_cast<std::ptrdiff_t>(got), m_bytes.end(), std::uint8_t{0xFF});
        m_unreadable = got < count;  // another program has shortened the file
        return;
    } catch (const ToolError&) {
        m_unreadable = true;
    }
    for (std::size_t done = 0; done < count;) {
        const std::size_t piece =
            std::min(kSector - static_cast<std::size_t>((at + done) % kSector), count - done);
        const auto part = all.subspan(done, piece);
        std::fill(part.begin(), part.end(), std::uint8_t{0xFF});
        try {
            (void)m_file.read(at + done, part);
        } catch (const ToolError&) {
            std::fill(part.begin(), part.end(), std::uint8_t{0xFF});
        }
        done += piece;
    }
}

}  // namespace simhost::tool
