// Many pictures on one sheet: scaled down, in rows, each with its label below. Not thread-safe.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tool/shared/pictures/picture.h"

namespace simhost::tool {

class ContactSheet {
 public:
    /// Pictures wider than `cellWidth` are scaled down to it; smaller ones stay as they are.
    explicit ContactSheet(std::int32_t cellWidth = 240) : m_cellWidth(cellWidth) {}

    void add(const Picture& picture, std::string label);
    bool empty() const noexcept { return m_cells.empty(); }
    std::size_t size() const noexcept { return m_cells.size(); }
    /// The sheet, 8 bits RGB, transparent pictures over a chequered ground. `columns` 0: about as many as
    /// rows.
    Picture render(std::size_t columns = 0) const;

 private:
    struct Cell {
        Picture picture;  // 8 bits RGB, scaled
        std::string label;
    };
    std::int32_t m_cellWidth;
    std::vector<Cell> m_cells;
};

/// Draws 7-bit text with its top left corner at (x, y) in one colour; what lies outside the picture is cut.
/// 8-bit RGB pictures only.
void drawText(Picture& picture, std::int32_t x, std::int32_t y, const std::string& text, std::uint16_t level);

/// Width of the text as drawText draws it.
std::int32_t textWidth(const std::string& text);
inline constexpr std::int32_t kTextHeight = 12;

}  // namespace simhost::tool
