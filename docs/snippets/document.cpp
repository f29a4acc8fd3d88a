// The snippets of docs/build-a-document.md.

#include <iostream>
#include <memory>
#include <string>
#include <utility>

#include "backend/tables/om/om.h"

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

std::unique_ptr<OmPivotTable> Counts() {
  return std::make_unique<OmPivotTable>(OmStringCell("Sex by class"), OmStringCell("Counts"),
                                        false);
}

}  // namespace

int main() {
  // [create]
  OmOutputTree document;  // holds one entry: a heading with the title "Output"
  OmOutputTree::Node root = document.Root();
  // [create]

  // [items]
  auto procedure =
      root.Child(new OmProcedure(OmStringCell("Crosstabs"), "CROSSTABS", "crosstabs", "DataSet1"));
  procedure.Child(new OmTextBlock(OmStringCell("Notes"), "2,201 cases read."));
  auto results = procedure.Child(new OmHeading(OmStringCell("Results")));
  std::unique_ptr<OmPivotTable> counts = Counts();
  auto table = results.Child(std::move(counts));  // the same, and safe if memory runs out
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
  document.Prune(results);  // deletes the heading and everything below it
  // [prune]
  std::cout << "-- pruned\n";
  PrintOutline(document);
}
