// om::Compare, which lists what a reader would see differently in two tables.
//
// Dimensions are matched by their names and categories by their labels, so that a table may be
// compared with a later one that has more of them, or has them in another order. Costs a walk over
// the categories and the stored cells of both.

#ifndef DISPLAY_COMPARISON_H
#define DISPLAY_COMPARISON_H

#include <string>
#include <vector>

#include "display/Export.h"
#include "display/TableView.h"

namespace om {

// One thing that a reader sees differently.
struct Difference {
  enum class Kind : unsigned char {
    kText,       // the title, the corner text or the caption
    kDimension,  // is missing, or is on another axis or at another position
    kCategory,   // is missing, or is at another position
    kCell,       // is missing, or has another text or number
    kFootnote,   // a text has other footnotes, or a footnote another marker of its own
    kFormat,     // an area, a cell's style or a number's format
  };

  Kind kind = Kind::kText;
  // A path for readers, in UTF-8, as "Region/North › Year/2024".
  std::string where;
  // What each table shows, in UTF-8; empty if it shows nothing.
  std::string first;
  std::string second;
  // The subscripts of the cell in each table if a cell, its footnotes or its format differ. Empty
  // for all other differences, and for a table that has no place for the cell.
  std::vector<int> firstSubscripts;
  std::vector<int> secondSubscripts;
};

// Which values count as equal, and what is compared.
struct CompareOptions {
  // Two cells are equal if their texts are equal, or if both are numbers that differ by at most the
  // larger of `absolute` and `relative` times the larger magnitude. Such numbers may still have a
  // difference of formats. Missing values are equal to each other.
  double absolute = 0;
  double relative = 0;
  bool formats = true;    // whether formats are compared
  bool footnotes = true;  // whether footnotes are compared
  // The maximum length of the list of differences.
  unsigned long most = 10000;
};

// Returns the differences between what two views show in all their layers: texts, dimensions,
// categories, area formats, then the cells in the order of the first table's iterators, then those
// that only the second table has. The list is empty if nothing differs. Cells of a category that
// one table lacks are not listed; if a dimension is missing, no cells are. If several categories
// have the same subscript, the cell of the first one is compared. Throws std::invalid_argument if a
// tolerance is negative or NaN.
[[nodiscard]] OM_DISPLAY_API std::vector<Difference> Compare(const TableView& first,
                                                             const TableView& second,
                                                             const CompareOptions& options = {});

}  // namespace om

#endif
