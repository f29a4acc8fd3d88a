// The snippet of README.md.

#include "backend/tables/om/om.h"
#include "platform/cells/CellTexts.h"

int main() {
  // [table]
  OmPivotTable table(OmStringCell("Survival"), OmStringCell("Counts"), false);
  OmDimension* const fate = table.AddDimension(OmStringCell("Fate"));
  fate->Child(fate->Root(), OmStringCell("Saved"), 0, false);
  fate->Child(fate->Root(), OmStringCell("Lost"), 1, false);
  OmDimension* const deck = table.AddDimension(OmStringCell("Class"));
  deck->Child(deck->Root(), OmStringCell("First"), 0, false);
  deck->Child(deck->Root(), OmStringCell("Crew"), 1, false);
  table.Columns().push_back(0);
  table.Rows().push_back(1);
  table.Cell({0, 0}, OmNumber(203));
  table.Cell({1, 1}, OmNumber(673));
  table.EndTable();
  // [table]
  return table.getNumCells() == 2 ? 0 : 1;
}
