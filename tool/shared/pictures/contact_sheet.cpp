#include "tool/shared/pictures/contact_sheet.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include <stb/stb_easy_font.h>

#include "tool/shared/pictures/thumbnail.h"

namespace simhost::tool {
namespace {

constexpr std::int32_t kGap = 8;
constexpr std::uint16_t kGround = 40;
constexpr std::uint16_t kInk = 225;
constexpr std::int32_t kChequer = 8;
constexpr std::int32_t kMostCellWidth = kMostPictureWidth - 2 * kGap;

Picture blank(std::int32_t width, std::int32_t height, std::uint16_t level) {
    Picture out;
    out.width = width;
    out.height = height;
    out.samples.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3, level);
    return out;
}

// Over a chequered ground where the picture is transparent.
Picture overGround(const Picture& picture) {
    Picture out = blank(picture.width, picture.height, 0);
    const auto channels = static_cast<std::size_t>(picture.channels);
    for (std::int32_t y = 0; y < out.height; ++y) {
        for (std::int32_t x = 0; x < out.width; ++x) {
            const std::uint16_t* from = picture.row(y) + static_cast<std::size_t>(x) * channels;
            const std::uint32_t alpha = channels == 4 ? from[3] : 255U;
            const std::uint32_t ground = (x / kChequer + y / kChequer) % 2 == 0 ? 150 : 105;
            std::uint16_t* to = out.row(y) + std::ptrdiff_t{3} * x;
            for (std::size_t i = 0; i < 3; ++i) {
                to[i] = static_cast<std::uint16_t>((from[i] * alpha + ground * (255 - alpha) + 127) / 255);
            }
        }
    }
    return out;
}

void paste(const Picture& source, Picture& target, std::int32_t x, std::int32_t y) {
    for (std::int32_t line = 0; line < source.height; ++line) {
        std::copy_n(source.row(line), std::ptrdiff_t{3} * source.width,
                    target.row(y + line) + std::ptrdiff_t{3} * x);
    }
}

std::string printable(std::string text) {
    for (char& c : text) {
        c = c >= 0x20 && c < 0x7F ? c : '?';
    }
    return text;
}

}  // namespace

void drawText(Picture& picture, std::int32_t x, std::int32_t y, const std::string& text,
              std::uint16_t level) {
    // The font gives rectangles of four corners of three floats and a colour.
    constexpr std::size_t kCornerBytes = 16;
    constexpr std::size_t kQuadBytes = 4 * kCornerBytes;
    std::string line = printable(text);
    std::vector<char> quads(kQuadBytes * 64 * (line.size() + 1));
    const int count =
        stb_easy_font_print(0.0F, 0.0F, line.data(), nullptr, quads.data(), static_cast<int>(quads.size()));
    const auto corner = [&quads](int quad, std::size_t which) {
        float at[2];
        std::memcpy(at, quads.data() + static_cast<std::size_t>(quad) * kQuadBytes + which * kCornerBytes,
                    sizeof at);
        return std::pair{static_cast<std::int32_t>(at[0]), static_cast<std::int32_t>(at[1])};
    };
    for (int quad = 0; quad < count; ++quad) {
        const auto [left, top] = corner(quad, 0);
        const auto [right, bottom] = corner(quad, 2);
        for (std::int32_t py = std::max(y + top, 0); py < std::min(y + bottom, picture.height); ++py) {
            for (std::int32_t px = std::max(x + left, 0); px < std::min(x + right, picture.width); ++px) {
                std::fill_n(picture.row(py) + std::ptrdiff_t{3} * px, 3, level);
            }
        }
    }
}

std::int32_t textWidth(const std::string& text) {
    std::string line = printable(text);
    return stb_easy_font_width(line.data());
}

std::string fittedText(const std::string& text, std::int32_t width) {
    if (textWidth(text) <= width) {
        return text;
    }
    std::string out = text;
    while (!out.empty() && textWidth(out + "...") > width) {
        out.pop_back();
    }
    return out + "...";
}

std::vector<std::uint32_t> spreadFrames(const std::vector<std::uint32_t>& frames, std::size_t most) {
    if (frames.size() <= most || most < 2) {
        return frames.size() <= most ? frames
                                     : std::vector(frames.begin(), frames.begin() + (most == 0 ? 0 : 1));
    }
    std::vector<std::uint32_t> out;
    for (std::size_t i = 0; i < most; ++i) {
        out.push_back(frames[static_cast<std::size_t>(std::uint64_t{i} * (frames.size() - 1) / (most - 1))]);
    }
    return out;
}

std::size_t ContactSheet::mostCells(std::int32_t width, std::int32_t height) noexcept {
    return static_cast<std::size_t>(std::min<std::uint64_t>(kMostCells, framesWorthShowing(width, height)));
}

std::size_t ContactSheet::mostFrames(std::size_t formats, std::int32_t width, std::int32_t height) noexcept {
    return std::max<std::size_t>(mostCells(width, height) / std::max<std::size_t>(formats, 1), 1);
}

std::int32_t ContactSheet::step(std::int32_t width, std::int32_t height) const noexcept {
    return thumbnailStep(width, height, m_cellWidth, 2 * m_cellWidth);
}

void ContactSheet::add(const Picture& picture, std::string label) {
    m_cells.push_back({overGround(thumbnail(picture, m_cellWidth, 2 * m_cellWidth)), std::move(label)});
}

Picture ContactSheet::render(std::size_t columns) const {
    std::int32_t cellWidth = 1;
    std::int32_t cellHeight = 1;
    for (const Cell& cell : m_cells) {
        cellWidth =
            std::clamp(std::max(cell.picture.width, textWidth(cell.label)), cellWidth, kMostCellWidth);
        cellHeight = std::max(cellHeight, cell.picture.height);
    }
    if (columns == 0) {
        columns = static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(m_cells.size()))));
    }
    const auto fitting = static_cast<std::size_t>((kMostPictureWidth - kGap) / (cellWidth + kGap));
    columns =
        std::clamp<std::size_t>(columns, 1, std::max<std::size_t>(std::min(m_cells.size(), fitting), 1));
    const std::size_t rows = (m_cells.size() + columns - 1) / columns;
    const std::int32_t pitchX = cellWidth + kGap;
    const std::int32_t pitchY = cellHeight + kTextHeight + kGap;
    const std::int32_t head = m_title.empty() ? 0 : kTextHeight + kGap;
    Picture out =
        blank(kGap + pitchX * static_cast<std::int32_t>(columns),
              head + kGap + pitchY * static_cast<std::int32_t>(std::max<std::size_t>(rows, 1)), kGround);
    drawText(out, kGap, kGap, fittedText(m_title, out.width - 2 * kGap), kInk);
    for (std::size_t i = 0; i < m_cells.size(); ++i) {
        const std::int32_t x = kGap + pitchX * static_cast<std::int32_t>(i % columns);
        const std::int32_t y = head + kGap + pitchY * static_cast<std::int32_t>(i / columns);
        paste(m_cells[i].picture, out, x, y);
        drawText(out, x, y + m_cells[i].picture.height + 2, fittedText(m_cells[i].label, cellWidth), kInk);
    }
    return out;
}

}  // namespace simhost::tool
