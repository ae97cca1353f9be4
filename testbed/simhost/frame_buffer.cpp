#include "simhost/frame_buffer.h"

#include <cstring>
#include <limits>
#include <new>

namespace simhost {
namespace {

constexpr std::size_t kAlignment = 64;

std::int64_t roundUp(std::int64_t value, std::int64_t unit) {
    return (value + unit - 1) / unit * unit;
}

std::int64_t strideFor(const PixelLayout& layout, std::int32_t width, std::int64_t pixelBytes,
                       RowBytesPolicy policy) {
    switch (policy) {
        case RowBytesPolicy::kMinimal:
            return pixelBytes;
        case RowBytesPolicy::kAligned16:
            return roundUp(pixelBytes, 16);
        case RowBytesPolicy::kPadded:
        case RowBytesPolicy::kNegative:
            break;
    }
    constexpr std::int32_t kV210Group = 6;
    if (layout.pixelsPerGroup == kV210Group) {
        return roundUp(width, 48) / 48 * 128 + 128;
    }
    return roundUp(pixelBytes, 16) + 16;
}

// How many bytes differ from the guard byte, and how far in the first one is.
struct Damage {
    std::size_t count = 0;
    std::size_t first = 0;
};

Damage inspect(const std::uint8_t* bytes, std::size_t size) {
    Damage found;
    for (std::size_t i = 0; i < size; ++i) {
        if (bytes[i] != FrameBuffer::kGuardByte) {
            if (found.count == 0) {
                found.first = i;
            }
            ++found.count;
        }
    }
    return found;
}

void describe(std::string& out, const std::string& where, const Damage& found) {
    if (found.count == 0) {
        return;
    }
    out += out.empty() ? "" : "; ";
    out += std::to_string(found.count) + " bytes written " + where + ", the first " +
           std::to_string(found.first) + " bytes in";
}

}  // namespace

FrameBuffer::FrameBuffer(const PixelLayout& layout, std::int32_t width, std::int32_t height,
                         RowBytesPolicy policy, std::int64_t mostBytes)
    : m_contents(nullptr),
      m_layout(&layout),
      m_width(width),
      m_height(height),
      m_rowPixels(minimalRowBytes(layout, width)),
      m_stride(strideFor(layout, width, m_rowPixels, policy)),
      m_rowBytes(0),
      m_total(0) {
    // Row bytes are 32-bit.
    if (m_stride > std::numeric_limits<std::int32_t>::max() || m_stride > mostBytes / height) {
        throw std::bad_alloc();
    }
    m_total = static_cast<std::size_t>(m_stride) * static_cast<std::size_t>(height) + 2 * kGuardBytes;
    m_memory = std::make_unique_for_overwrite<std::uint8_t[]>(m_total + kAlignment);
    const auto address = reinterpret_cast<std::uintptr_t>(m_memory.get()) + kGuardBytes;
    m_base = m_memory.get() + kGuardBytes + (kAlignment - address % kAlignment) % kAlignment;
    const auto stride = static_cast<std::int32_t>(m_stride);
    if (policy == RowBytesPolicy::kNegative) {
        m_rowBytes = -stride;
        m_first = m_base + std::ptrdiff_t{stride} * (height - 1);
    } else {
        m_rowBytes = stride;
        m_first = m_base;
    }
    // An address that no program can read: an importer that looks through the handle crashes.
    m_contents = reinterpret_cast<host::PPixContents*>(std::uintptr_t{0xFFFF'F00D'0000'0001});
}

std::uint8_t* FrameBuffer::rowStart(std::int32_t line) const noexcept {
    return m_base + m_stride * line;
}

void FrameBuffer::poison(std::uint8_t pixels) {
    std::memset(m_base - kGuardBytes, kGuardByte, m_total);
    for (std::int32_t line = 0; line < m_height; ++line) {
        std::memset(rowStart(line), pixels, static_cast<std::size_t>(m_rowPixels));
    }
}

FrameDamage FrameBuffer::damage() const {
    FrameDamage out;
    describe(out.outside, "before the buffer", inspect(m_base - kGuardBytes, kGuardBytes));
    const auto padding = static_cast<std::size_t>(m_stride - m_rowPixels);
    for (std::int32_t line = 0; line < m_height && out.padding.size() < 1000; ++line) {
        describe(out.padding, "behind the pixels of line " + std::to_string(line),
                 inspect(rowStart(line) + m_rowPixels, padding));
    }
    describe(out.outside, "behind the buffer", inspect(rowStart(m_height), kGuardBytes));
    return out;
}

}  // namespace simhost
