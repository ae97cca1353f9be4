// Many pictures on one sheet: scaled down, in rows, each with its label below. Not thread-safe.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tool/shared/pictures/picture.h"

namespace simhost::tool {

class ContactSheet {
 public:
    /// A sheet of more than this takes more than a moment to make, and nobody looks at it.
    static constexpr std::size_t kMostCells = 120;

    /// How many pictures of frames of this size a sheet has at most: no more than kMostCells, and no more
    /// pixels than kMostShownPixels; at least one.
    static std::size_t mostCells(std::int32_t width, std::int32_t height) noexcept;
    /// How many frames that is, each in so many formats; at least one.
    static std::size_t mostFrames(std::size_t formats, std::int32_t width, std::int32_t height) noexcept;

    /// Pictures wider than `cellWidth`, or higher than twice that, are scaled down; smaller ones stay as they
    /// are. `title` stands above them, unless it is empty.
    explicit ContactSheet(std::int32_t cellWidth = 240, std::string title = {})
        : m_cellWidth(cellWidth), m_title(std::move(title)) {}

    /// What `toPicture` has to take of a frame of this size for a cell.
    std::int32_t step(std::int32_t width, std::int32_t height) const noexcept;

    void add(const Picture& picture, std::string label);
    void setTitle(std::string title) { m_title = std::move(title); }
    bool empty() const noexcept { return m_cells.empty(); }
    std::size_t size() const noexcept { return m_cells.size(); }
    /// The sheet, 8 bits RGB, at most kMostPictureWidth wide, transparent pictures over a chequered ground.
    /// `columns` 0: about as many as rows.
    Picture render(std::size_t columns = 0) const;

 private:
    struct Cell {
        Picture picture;  // 8 bits RGB, scaled
        std::string label;
    };
    std::int32_t m_cellWidth;
    std::string m_title;
    std::vector<Cell> m_cells;
};

/// Programs that show pictures have trouble with wider ones.
inline constexpr std::int32_t kMostPictureWidth = 4096;

/// At most `most` of the frames, evenly spread, the first and the last among them.
std::vector<std::uint32_t> spreadFrames(const std::vector<std::uint32_t>& frames, std::size_t most);

/// Draws 7-bit text with its top left corner at (x, y) in one colour; what lies outside the picture is cut.
/// 8-bit RGB pictures only.
void drawText(Picture& picture, std::int32_t x, std::int32_t y, const std::string& text, std::uint16_t level);

/// Width of the text as drawText draws it.
std::int32_t textWidth(const std::string& text);
/// The text, or its beginning and "..." where it is wider than `width`.
std::string fittedText(const std::string& text, std::int32_t width);
inline constexpr std::int32_t kTextHeight = 12;

}  // namespace simhost::tool
