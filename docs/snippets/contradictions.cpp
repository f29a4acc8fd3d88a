// The snippets about what is wrong with tables and documents.

#include <iostream>

#include "backend/tables/om/om.h"
#include "platform/cells/CellTexts.h"

namespace {

OmPivotTable* Fruit() {
  // [wrong]
  auto* const table = new OmPivotTable(OmStringCell("Fruit"), OmStringCell("Fruit"), false);
  OmDimension* const kind = table->AddDimension(OmStringCell("Kind"));
  kind->Child(kind->Root(), OmStringCell("Apples"), 1, false);  // meant to be 0
  kind->Child(kind->Root(), OmStringCell("Pears"), 1, false);
  OmDimension* const year = table->AddDimension(OmStringCell("Year"));
  year->Child(year->Root(), OmStringCell("2024"), 0, false);
  table->Rows().push_back(0);
  table->Columns().push_back(0);  // meant to be 1
  table->EndTable();              // looks at the number of entries only
  table->Cell({0, 0}, OmNumber(7));
  table->Cell({1, 0}, OmNumber(9));
  // [wrong]
  return table;
}

}  // namespace

int main() {
  OmOutputTree document;
  OmOutputTree::Node root(document, document.List().begin());
  OmPivotTable* const table = Fruit();
  root.Child(table);

  // [table]
  for (const om::Finding& finding : om::Contradictions(*table)) {
    std::cout << finding << '\n';
  }
  // [table]

  // [document]
  // Lists the entries of a document that are shown wrongly.
  for (const om::Finding& finding : om::Contradictions(document)) {
    if (finding.weight == om::Finding::Weight::kShownWrongly) {
      std::cerr << finding << '\n';
    }
  }
  // [document]
}
