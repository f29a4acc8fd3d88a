// Builds a document with one table of two dimensions and a footnote, and prints it as a front end
// would.

#include <cstdio>
#include <deque>
#include <string>
#include <vector>

#include "backend/tables/om/om.h"
#include "platform/cells/CellTexts.h"

namespace {

OmPivotTable* CountTable() {
  auto* const table = new OmPivotTable(OmStringCell("Sex by class"), OmStringCell("Counts"), false);
  OmDimension* const sex = table->AddDimension(OmStringCell("Sex"));
  sex->Child(sex->Root(), OmStringCell("Women"), 0, false);
  sex->Child(sex->Root(), OmStringCell("Men"), 1, false);
  OmDimension* const cls = table->AddDimension(OmStringCell("Class"));
  cls->Child(cls->Root(), OmStringCell("First"), 0, false);
  cls->Child(cls->Root(), OmStringCell("Second"), 1, false);
  table->Rows().push_back(0);
  table->Columns().push_back(1);
  const Qualtex_Format whole(Qualtex_Format::kFixed, 8, 0);
  table->Cell({0, 0}, OmNumber(145, whole));
  table->Cell({1, 0}, OmNumber(180, whole));
  table->Cell({1, 1}, OmNumber(179, whole));
  const OmStringCell note("Crew left out.");
  table->Footnote(OmFootnote(&note, nullptr, nullptr), false);
  table->EndTable();
  return table;
}

class Front : public OmOutputPart::Visitor {
 public:
  void Visit(OmPivotTable& table) override {
    std::printf("%s\n", table.Title()->Text().c_str());
    OmDisplayLayerHeading layers(table, false);
    layers.SwitchLayer(0);
    const OmDisplayRowHeading rows(layers, false, true);
    const OmDisplayColumnHeading columns(layers, false);
    std::vector<int> subscripts(table.NDimensions());
    for (int r = 0; r < static_cast<int>(rows.NRows()); ++r) {
      std::printf("%-6s", (*rows.RowCategories(r).front())->Text()->Text().c_str());
      for (int c = 0; c < static_cast<int>(columns.NColumns()); ++c) {
        rows.Fill(subscripts, r);
        columns.Fill(subscripts, c);
        const OmCellText* const cell = table.Cell(subscripts);
        std::printf(" %s %s", (*columns.ColumnCategories(c).front())->Text()->Text().c_str(),
                    cell != nullptr ? cell->Text().c_str() : "-");
      }
      std::printf("\n");
    }
    for (const OmFootnote& note : table.Footnotes()) {
      std::printf("%s\n", note.Text()->Text().c_str());
    }
  }
  void Visit(OmHeading& part) override { std::printf("%s\n", part.Title()->Text().c_str()); }
  void Visit(OmTextBlock& part) override { std::printf("%s\n", part.Text().c_str()); }
  void Visit(OmChart&) override {}
  void Visit(OmDendrix&) override {}
  void Visit(OmModel&) override {}
  void Visit(OmInteractive&) override {}
};

}  // namespace

int main() {
  OmOutputTree document;
  OmOutputTree::Node root(document, document.List().begin());
  root.Child(CountTable());
  root.Child(new OmTextBlock(OmStringCell("Log"), "done"));
  try {
    static_cast<void>(OmPivotTable(OmStringCell(""), OmStringCell(""), false).Size(0));
  } catch (const OMSException& error) {
    // That exceptions cross the border of the library, whatever it was built with.
    root.Child(new OmTextBlock(OmStringCell("Error"), error.what()));
  }
  Front front;
  for (auto& entry : document.List()) {
    entry.Data()->Accept(front);
  }
}
