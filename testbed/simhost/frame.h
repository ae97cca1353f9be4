// A frame that the plug-in has delivered. Gives the buffer back to the host when it goes, which checks its
// guards then. Move-only; one owner; may outlive the Host.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "simhost/frame_buffer.h"

namespace simhost {

class Host;

class Frame {
 public:
    /// `topLeft`: rows are stored top row first, as the host told the plug-in.
    Frame(Host& host, std::shared_ptr<FrameBuffer> buffer, bool topLeft) noexcept;
    Frame(Frame&& other) noexcept = default;
    Frame& operator=(Frame&& other) noexcept;
    ~Frame();

    std::uint32_t pixelFormat() const noexcept { return m_buffer->layout().code; }
    const PixelLayout& layout() const noexcept { return m_buffer->layout(); }
    std::int32_t width() const noexcept { return m_buffer->width(); }
    std::int32_t height() const noexcept { return m_buffer->height(); }
    std::int32_t rowBytes() const noexcept { return m_buffer->rowBytes(); }
    bool topLeft() const noexcept { return m_topLeft; }

    /// The pixels of row `y` as stored, without padding.
    std::span<const std::uint8_t> storedRow(std::int32_t y) const noexcept;
    /// The pixels of row `y` counted from the top of the picture.
    std::span<const std::uint8_t> pictureRow(std::int32_t y) const noexcept;
    /// All rows from the top of the picture, without padding.
    std::vector<std::uint8_t> picture() const;

 private:
    void giveBack() noexcept;

    Host* m_host;
    std::shared_ptr<FrameBuffer> m_buffer;
    bool m_topLeft;
};

}  // namespace simhost
