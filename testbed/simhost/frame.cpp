#include "simhost/frame.h"

#include <utility>

#include "simhost/host.h"

namespace simhost {

Frame::Frame(Host& host, std::shared_ptr<FrameBuffer> buffer, bool topLeft) noexcept
    : m_host(&host), m_buffer(std::move(buffer)), m_topLeft(topLeft) {}

Frame& Frame::operator=(Frame&& other) noexcept {
    if (this != &other) {
        giveBack();
        m_host = other.m_host;
        m_buffer = std::move(other.m_buffer);
        m_topLeft = other.m_topLeft;
    }
    return *this;
}

Frame::~Frame() {
    giveBack();
}

void Frame::giveBack() noexcept {
    // A frame may be kept longer than its host; then there is nobody to tell.
    if (m_buffer && Host::current() == m_host) {
        m_host->releaseDelivered(m_buffer);
    }
    m_buffer.reset();
}

std::span<const std::uint8_t> Frame::storedRow(std::int32_t y) const noexcept {
    return {m_buffer->row(y), static_cast<std::size_t>(m_buffer->pixelBytesPerRow())};
}

std::span<const std::uint8_t> Frame::pictureRow(std::int32_t y) const noexcept {
    return storedRow(m_topLeft ? y : height() - 1 - y);
}

std::vector<std::uint8_t> Frame::picture() const {
    std::vector<std::uint8_t> out;
    out.reserve(static_cast<std::size_t>(m_buffer->pixelBytesPerRow()) * static_cast<std::size_t>(height()));
    for (std::int32_t y = 0; y < height(); ++y) {
        const auto row = pictureRow(y);
        out.insert(out.end(), row.begin(), row.end());
    }
    return out;
}

}  // namespace simhost
