// The snippets of docs/read-a-document.md.

#include <iostream>
#include <string>

#include "backend/tables/om/om.h"
#include "platform/cells/CellTexts.h"

namespace {

// [visitor]
class Reader : public OmOutputPart::Visitor {
 public:
  void Visit(OmPivotTable& part) override { Table(part); }
  void Visit(OmHeading& part) override { std::cout << "heading: " << part.Title()->Text() << '\n'; }
  void Visit(OmTextBlock& part) override { std::cout << "text: " << part.Text() << '\n'; }
  void Visit(OmChart& part) override {
    std::cout << "chart: " << part.GetImageData().size() << " bytes of image\n";
  }
  void Visit(OmDendrix&) override {}
  void Visit(OmModel&) override {}
  void Visit(OmInteractive&) override {}
  // Procedures arrive as headings and page titles as text blocks, unless their overloads are
  // overridden too.

 private:
  static void Table(OmPivotTable& table);
};
// [visitor]

// [cells]
void Reader::Table(OmPivotTable& table) {
  std::cout << "table: " << table.Title()->Text() << '\n';
  const OmPivotTable& readOnly = table;
  for (auto cell = readOnly.FirstCell(); cell.Cell() != nullptr; ++cell) {
    std::cout << "  (";
    for (const int subscript : cell.Index()) {
      std::cout << ' ' << subscript;
    }
    std::cout << " ) " << cell.Cell()->Text() << '\n';
  }
  for (const OmFootnote& note : readOnly.Footnotes()) {
    std::cout << "  note: " << note.Text()->Text() << '\n';
  }
}
// [cells]

// [nodes]
// The children of a node, and theirs: what a tree view does.
void Walk(OmOutputTree::Node node, OmOutputPart::Visitor& visitor) {
  (*node)->Accept(visitor);
  const auto end = node.End();
  for (auto child = node.Begin(); child != end; ++child) {
    Walk(child, visitor);
  }
}
// [nodes]

OmPivotTable* SmallTable() {
  auto* const table = new OmPivotTable(OmStringCell("Scores"), OmStringCell("Scores"), false);
  OmDimension* const team = table->AddDimension(OmStringCell("Team"));
  team->Child(team->Root(), OmStringCell("Red"), 0, false);
  team->Child(team->Root(), OmStringCell("Blue"), 1, false);
  table->AddDimension(OmStringCell("Statistics"))
      ->Child(table->Dimension(1)->Root(), OmStringCell("Mean"), 0, false);
  table->Rows().push_back(0);
  table->Columns().push_back(1);
  table->Cell({1, 0}, OmNumber(3.5));
  table->Cell({0, 0}, OmNumber(2.25));
  const OmStringCell text("Out of five.");
  table->Footnote(OmFootnote(&text, nullptr, nullptr), false);
  table->EndTable();
  return table;
}

}  // namespace

int main() {
  OmOutputTree document;
  OmOutputTree::Node root = document.Root();
  auto heading = root.Child(new OmHeading(OmStringCell("Scores")));
  heading.Child(SmallTable());
  auto* const chart = new OmChart(OmStringCell("Bars"), "", 1);
  chart->SetImageStream("\x89PNG", 4);  // in chunks, as they come
  chart->SetImageStream("....", 4);
  heading.Child(chart);
  root.Child(new OmTextBlock(OmStringCell("Log"), "Done."));

  Reader reader;
  Walk(root, reader);
}
