// HtmlGrid renders one layer of a pivot table as a table element.

#ifndef EXAMPLES_REPORT_HTMLGRID_H
#define EXAMPLES_REPORT_HTMLGRID_H

#include <iosfwd>
#include <vector>

#include "backend/tables/om/DisplayColumnHeading.h"
#include "backend/tables/om/DisplayLayerHeading.h"
#include "backend/tables/om/DisplayRowHeading.h"
#include "examples/report/HtmlFootnotes.h"
#include "examples/report/HtmlSpans.h"

namespace report {

// The headings are those of the layer that is current when the grid is made; Write shows the cells
// of the layer that is current then.
class HtmlGrid {
 public:
  // The layer heading and the footnotes have to outlive the grid.
  HtmlGrid(OmDisplayLayerHeading& layer, const HtmlFootnotes& footnotes);

  [[nodiscard]] bool IsEmpty() const { return rows.NRows() == 0 || columns.NColumns() == 0; }
  void Write(std::ostream& out) const;

 private:
  void WriteLayerNames(std::ostream& out) const;
  void WriteColumnGroups(std::ostream& out) const;
  void WriteHead(std::ostream& out) const;
  void WriteCorner(std::ostream& out, unsigned headRows) const;
  void WriteBody(std::ostream& out) const;
  void WriteCells(std::ostream& out, std::vector<int>& subscripts) const;

  OmDisplayLayerHeading& layer;
  const HtmlFootnotes& footnotes;
  OmDisplayRowHeading rows;
  OmDisplayColumnHeading columns;
  HeadSpans rowSpans;
  HeadSpans columnSpans;
};

}  // namespace report

#endif
