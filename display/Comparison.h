// om::Compare, what a reader would see differently in two tables.
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
    kDimension,  // is missing, or stands on another axis or at another position
    kCategory,   // is missing, or stands at another position
    kCell,       // is missing, or has another text or number
    kFootnote,   // a text has other footnotes, or a footnote another marker of its own
    kFormat,     // an area, a cell's style or a number's format
  };

  Kind kind = Kind::kText;
  // A path for readers, in UTF-8, as "Region/North › Year/2024".
  std::string where;
  // What each table shows, in UTF-8; empty where it shows nothing.
  std::string first;
  std::string second;
  // Of a cell, or a cell's footnotes or format, in each table; empty in all other differences, and
  // for the table that has no place for the cell.
  std::vector<int> firstSubscripts;
  std::vector<int> secondSubscripts;
};

// What passes for equal, and what is looked at.
struct CompareOptions {
  // Two cells are equal where their texts are, and where both are numbers that differ by no more
  // than the larger of `absolute` and `relative` times the larger of their magnitudes; what is left
  // then is a difference of their formats. Missing values are equal to each other.
  double absolute = 0;
  double relative = 0;
  bool formats = true;    // whether formats are compared
  bool footnotes = true;  // whether footnotes are compared
  // The list ends after as many differences.
  unsigned long most = 10000;
};

// Returns what differs between what two views show in all their layers: texts, dimensions,
// categories, area formats, then the cells in the order of the first table's iterators, and those
// that the second alone has. Nothing differs where the list is empty. Cells of categories that one
// table lacks are not listed by themselves, and where a dimension is missing, no cells are. Of
// categories that carry one subscript, the first one's cell is compared. Throws
// std::invalid_argument where a tolerance is negative or not a number.
[[nodiscard]] OM_DISPLAY_API std::vector<Difference> Compare(const TableView& first,
                                                             const TableView& second,
                                                             const CompareOptions& options = {});

}  // namespace om

#endif
