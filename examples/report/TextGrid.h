// TextGrid, a table of cells that is drawn with lines of characters.
//
// The first rows and the first columns are headings. Cells that are joined show one text and no
// line between them. Where the columns do not fit the page, they are drawn in blocks, each with the
// heading columns in front.

#ifndef EXAMPLES_REPORT_TEXTGRID_H
#define EXAMPLES_REPORT_TEXTGRID_H

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

namespace report {

class TextGrid {
 public:
  enum class Align : unsigned char { kLeft, kRight, kCentre };

  struct Cell {
    std::string text;
    std::string marker;  // stands behind the text, outside the alignment of numbers
    Align align = Align::kLeft;
    bool joinRight = false;  // with the cell to the right: the leftmost one holds the text
    bool joinDown = false;   // with the cell below: the topmost one holds the text
  };

  TextGrid(std::size_t rows, std::size_t columns, std::size_t headRows, std::size_t headColumns);

  [[nodiscard]] Cell& At(std::size_t row, std::size_t column);
  [[nodiscard]] const Cell& At(std::size_t row, std::size_t column) const;
  [[nodiscard]] std::size_t Rows() const noexcept { return rows; }
  [[nodiscard]] std::size_t Columns() const noexcept { return columns; }

  // Draws with box characters, or in ASCII, no wider than `width` where the texts can be broken so
  // far.
  void Draw(std::ostream& out, int width, bool ascii) const;

 private:
  class Block;

  // Invariant: rows * columns cells, row by row.
  std::size_t rows;
  std::size_t columns;
  std::size_t headRows;
  std::size_t headColumns;
  std::vector<Cell> cells;
};

}  // namespace report

#endif
