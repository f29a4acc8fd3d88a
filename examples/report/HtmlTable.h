// Renders a pivot table with all of its layers.

#ifndef EXAMPLES_REPORT_HTMLTABLE_H
#define EXAMPLES_REPORT_HTMLTABLE_H

#include <iosfwd>
#include <string>

class OmPivotTable;

namespace report {

// Where a table stands in the page and how it starts.
struct HtmlTablePlace {
  std::string id;
  std::string look;  // class of its area formats; may be empty
  bool skipEmpty = false;
};

// Writes title, menus, every layer, caption and footnotes. A layer that looks different without its
// empty rows and columns is written both ways, and a switch tells which way is shown. A table that
// has room for very many cells is written without its empty rows and columns only.
void WriteTable(std::ostream& out, OmPivotTable& table, const HtmlTablePlace& place);

}  // namespace report

#endif
