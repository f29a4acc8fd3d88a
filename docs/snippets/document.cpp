// The snippets of docs/build-a-document.md.

#include <iostream>
#include <string>

#include "backend/tables/om/om.h"
#include "platform/cells/CellTexts.h"

namespace {

// [outline]
void PrintOutline(OmOutputTree& document) {
  for (auto& entry : document.List()) {  // document order, each entry with its level
    std::cout << std::string(2 * static_cast<unsigned long>(entry.Level()), ' ')
              << entry.Data()->Title()->Text()
              << (dynamic_cast<OmPivotTable*>(entry.Data()) != nullptr ? " (table)" : "") << '\n';
  }
}
// [outline]

OmPivotTable* Counts() {
  return new OmPivotTable(OmStringCell("Sex by class"), OmStringCell("Counts"), false);
}

}  // namespace

int main() {
  // [create]
  OmOutputTree document;  // holds one entry: a heading with the title "Output"
  OmOutputTree::Node root(document, document.List().begin());
  // [create]

  // [items]
  auto procedure =
      root.Child(new OmProcedure(OmStringCell("Crosstabs"), "CROSSTABS", "crosstabs", "DataSet1"));
  procedure.Child(new OmTextBlock(OmStringCell("Notes"), "2,201 cases read."));
  auto results = procedure.Child(new OmHeading(OmStringCell("Results")));
  auto table = results.Child(Counts());
  results.Child(new OmTextBlock(OmStringCell("Log"), "Done."));
  // [items]

  PrintOutline(document);

  // [amputate]
  // The table could not be finished: a message takes its place and its title.
  auto message = Amputate(table, nullptr, "Not enough memory for the table.");
  // [amputate]
  std::cout << "-- " << static_cast<OmTextBlock*>(*message)->Text() << '\n';
  PrintOutline(document);

  // [prune]
  document.Prune(results);  // deletes the heading and all that is under it
  // [prune]
  std::cout << "-- pruned\n";
  PrintOutline(document);
}
