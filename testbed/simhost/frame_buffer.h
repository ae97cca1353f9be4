// One frame buffer of the simulated host: pixel memory with poison in the pixels, known bytes in the padding
// of each row, and guard areas before the first and behind the last byte. The host creates and destroys it;
// the plug-in sees only its handle. Not thread-safe by itself; one owner at a time, as the host demands.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/basic_types.h"
#include "simhost/host_profile.h"
#include "simhost/pixel_layout.h"

namespace simhost {

/// Bytes that were written where no pixel is: how many and where; empty: none.
struct FrameDamage {
    std::string outside;  ///< before and behind the memory of the frame
    std::string padding;  ///< behind the pixels of its rows
};

class FrameBuffer {
 public:
    static constexpr std::uint8_t kPixelPoison = 0xCD;
    static constexpr std::uint8_t kGuardByte = 0xEF;
    static constexpr std::size_t kGuardBytes = 256;

    /// `layout` must be one that frames can be created of; width and height at least 1. Throws
    /// std::bad_alloc, also when the rows take more than `mostBytes`.
    FrameBuffer(const PixelLayout& layout, std::int32_t width, std::int32_t height, RowBytesPolicy policy,
                std::int64_t mostBytes);
    FrameBuffer(const FrameBuffer&) = delete;
    FrameBuffer& operator=(const FrameBuffer&) = delete;

    /// Fills pixels with poison, padding and guards with the guard byte. Without it a new buffer holds
    /// anything.
    void poison(std::uint8_t pixels = kPixelPoison);

    /// What was written outside the pixels since poison().
    FrameDamage damage() const;

    host::PPixHand handle() noexcept { return &m_contents; }
    const PixelLayout& layout() const noexcept { return *m_layout; }
    std::int32_t width() const noexcept { return m_width; }
    std::int32_t height() const noexcept { return m_height; }
    std::int32_t rowBytes() const noexcept { return m_rowBytes; }           ///< negative: rows go downwards
    std::int64_t pixelBytesPerRow() const noexcept { return m_rowPixels; }  ///< without padding
    std::size_t allocatedBytes() const noexcept { return m_total; }
    /// First row in storage order, the address that the host hands out.
    std::uint8_t* pixels() noexcept { return m_first; }
    const std::uint8_t* pixels() const noexcept { return m_first; }
    /// Row `y` in storage order.
    const std::uint8_t* row(std::int32_t y) const noexcept {
        return m_first + std::ptrdiff_t{y} * m_rowBytes;
    }

    bool delivered = false;  ///< the plug-in has handed it over; the host owns it

 private:
    std::uint8_t* rowStart(std::int32_t line) const noexcept;  // in memory order

    host::PPixContents* m_contents;
    const PixelLayout* m_layout;
    std::int32_t m_width;
    std::int32_t m_height;
    std::int64_t m_rowPixels;
    std::int64_t m_stride;
    std::int32_t m_rowBytes;
    std::size_t m_total;
    std::unique_ptr<std::uint8_t[]> m_memory;
    std::uint8_t* m_base;   // first byte behind the front guard
    std::uint8_t* m_first;  // first row in storage order
};

}  // namespace simhost
