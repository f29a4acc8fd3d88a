// The snippets of docs/errors.md.

#include <iostream>

#include "backend/tables/om/om.h"
#include "platform/cells/CellTexts.h"
#include "platform/dataio/BackendSettings.h"

int main() {
  OmPivotTable table(OmStringCell("T"), OmStringCell("T"), false);
  OmDimension* const dimension = table.AddDimension(OmStringCell("D"));
  dimension->Child(dimension->Root(), OmStringCell("c"), 0, false);

  // [exception]
  try {
    table.Cell({0, 0}, OmNumber(1));  // two subscripts for one dimension
  } catch (const OMSException& error) {
    std::cout << error.what() << '\n';
  }
  // [exception]

  // [axes]
  try {
    table.EndTable();  // the dimension is on no axis
  } catch (const OMSException& error) {
    std::cout << error.what() << '\n';
  }
  table.Rows().push_back(0);  // the table is unchanged, and the mistake can be corrected
  table.EndTable();
  // [axes]

  // [limit]
  BackendSettings settings;
  settings.setMaxCells(2);
  table.setBackendSettings(settings);
  std::cout << std::boolalpha;
  for (int i = 0; i < 3; ++i) {
    const bool stored = table.Cell({i}, OmNumber(i));
    std::cout << stored << ' ' << table.IsScratched() << '\n';
  }
  // [limit]
}
