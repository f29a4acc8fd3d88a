// What both front ends ask of a cell: which one stands at a place of the display, and whether it is
// a number, which stands at the right of its column.

#ifndef EXAMPLES_REPORT_SHOWNCELL_H
#define EXAMPLES_REPORT_SHOWNCELL_H

#include <vector>

class OmCellText;
class OmPivotTable;

namespace report {

// Returns the cell that the headings' subscripts address, or null. A category that was given no
// subscript fills in a negative one: there is no cell then.
[[nodiscard]] OmCellText* ShownCell(OmPivotTable& table, const std::vector<int>& subscripts);

[[nodiscard]] bool IsNumber(OmCellText& cell);

}  // namespace report

#endif
