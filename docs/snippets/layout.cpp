// The snippets of docs/lay-out-a-table.md.

#include <iomanip>
#include <iostream>
#include <string>
#include <vector>

#include "backend/tables/om/om.h"
#include "platform/cells/CellTexts.h"

namespace {

OmDimension* Add(OmPivotTable& table, const char* name, const std::vector<const char*>& labels) {
  OmDimension* const dimension = table.AddDimension(OmStringCell(name));
  for (const char* const label : labels) {
    dimension->Child(dimension->Root(), OmStringCell(label), dimension->NumCategories(), false);
  }
  return dimension;
}

// [label]
std::string Label(const OmDisplayLayerHeading::ConstNode* node) {
  // Null if a dimension shows fewer labels here than elsewhere.
  return node != nullptr && (*node)->Text() != nullptr ? (*node)->Text()->Text() : "";
}
// [label]

// [show]
void Show(OmPivotTable& table, OmDisplayLayerHeading& layers, bool skipEmpty) {
  const OmDisplayRowHeading rows(layers, skipEmpty, true);  // names of dimensions in the corner
  const OmDisplayColumnHeading columns(layers, skipEmpty);
  const auto nRows = static_cast<int>(rows.NRows());
  const auto nColumns = static_cast<int>(columns.NColumns());

  // Above the cells: one line for each row of column labels, the corner in the last one.
  for (int line = 0; line < static_cast<int>(columns.NRows()); ++line) {
    const bool last = line + 1 == static_cast<int>(columns.NRows());
    for (const OmCellText* const corner : rows.CornerText()) {
      std::cout << std::setw(8) << (last && corner != nullptr ? corner->Text() : "");
    }
    for (auto* const node : columns.Row(line)) {
      std::cout << std::setw(8) << Label(node);
    }
    std::cout << '\n';
  }

  for (int r = 0; r < nRows; ++r) {
    for (auto* const node : rows.Row(r)) {
      std::cout << std::setw(8) << Label(node);
    }
    for (int c = 0; c < nColumns; ++c) {
      std::vector<int> subscripts;
      layers.Fill(subscripts);
      rows.Fill(subscripts, r);
      columns.Fill(subscripts, c);
      const OmCellText* const cell = table.Cell(subscripts);
      std::cout << std::setw(8) << (cell != nullptr ? cell->Text() : ".");
    }
    std::cout << '\n';
  }
}
// [show]

}  // namespace

int main() {
  OmPivotTable table(OmStringCell("Sales"), OmStringCell("Sales"), false);
  Add(table, "Year", {"2023", "2024"});
  OmDimension* const towns = Add(table, "Town", {"Oslo"});
  const auto abroad =
      towns->Child(towns->Root(), OmStringCell("Abroad"), OmDimensionNode::kNoSubscript, true);
  towns->Child(abroad, OmStringCell("Rome"), 1, false);
  towns->Child(abroad, OmStringCell("Bonn"), 2, false);
  Add(table, "Kind", {"Tea", "Coffee"});
  table.Layers().push_back(0);
  table.Rows().push_back(1);
  table.Columns().push_back(2);
  const Qualtex_Format whole(Qualtex_Format::kFixed, 8, 0);
  table.Cell({0, 0, 0}, OmNumber(12, whole));
  table.Cell({0, 0, 1}, OmNumber(7, whole));
  table.Cell({0, 2, 1}, OmNumber(9, whole));
  table.Cell({1, 2, 0}, OmNumber(4, whole));
  table.EndTable();

  // [layers]
  OmDisplayLayerHeading layers(table, false);  // true would number layers with cells only
  for (int n = 0; layers.SwitchLayer(n); ++n) {
    std::cout << "Year: " << Label(layers.Nodes(0).back()) << '\n';
    Show(table, layers, false);
  }
  // [layers]

  // [empty]
  std::cout << "-- empty rows and columns left out\n";
  layers.SwitchLayer(0);
  Show(table, layers, true);
  // [empty]

  // [hidden]
  std::cout << "-- the first town hidden\n";
  // A hidden category keeps its place and its cells; only its label is not shown.
  OmDimension* const town = table.Dimension(1);
  town->Root().Begin()->Hide(true);
  {
    // The table changed, so it needs new headings.
    OmDisplayLayerHeading fresh(table, false);
    fresh.SwitchLayer(0);
    Show(table, fresh, false);
  }
  // [hidden]
}
