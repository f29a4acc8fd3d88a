// The snippets of docs/edit-a-dimension.md.

#include <iostream>

#include "backend/tables/om/om.h"

using om::Cell;

namespace {

// Writes the categories with their subscripts, and groups with what is below them in brackets.
void Show(const char* after, OmDimension::ConstNode node) {
  std::cout << after;
  for (auto child = node.Begin(); child != node.End(); ++child) {
    std::cout << ' ' << child->Text()->Text();
    if (child->IsGroup()) {
      Show("(", child);
      std::cout << " )";
    } else {
      std::cout << ' ' << child->Subscript();
    }
  }
  std::cout << (node.IsRoot() ? "\n" : "");
}

}  // namespace

int main() {
  OmPivotTable table(Cell("Sales"), Cell("Sales"), false);

  // [build]
  OmDimension& towns = *table.AddDimension(Cell("Town"));
  for (const char* const region : {"North", "South"}) {
    towns.AddNewChild(towns.Root(), Cell(region), OmDimensionNode::kNoSubscript, true);
  }
  auto north = towns.Root()[0];  // made after both groups were added: adding moves siblings
  towns.AddNewChild(north, Cell("Oslo"), 0, false);
  towns.AddNewChild(north, Cell("Bergen"), 1, false);
  auto south = towns.Root()[1];
  towns.AddNewChild(south, Cell("Rome"), 2, false);
  towns.AddNewChild(south, Cell("Bari"), 3, false);
  // [build]
  Show("built:", towns.Root());

  // [insert]
  auto oslo = towns.Root()[0][0];
  towns.insertCategory(Cell("Malmo"), oslo, towns.Root()[0], false);  // after Oslo
  // [insert]
  Show("inserted:", towns.Root());

  // [move]
  auto bari = towns.Root()[1][1];
  auto malmo = towns.Root()[0][1];
  towns.moveChild(bari, &malmo, false);  // in front of Malmo
  // [move]
  Show("moved:", towns.Root());

  // [swap]
  auto first = towns.Root()[0];
  auto second = towns.Root()[1];
  towns.moveChild(first, &second, true);
  // [swap]
  Show("swapped:", towns.Root());

  // [group]
  auto a = towns.Root()[1][1];
  auto b = towns.Root()[1][2];
  towns.insertChild(Cell("Ports"), {&a, &b});  // siblings, in ascending order
  // [group]
  Show("grouped:", towns.Root());

  // [dissolve]
  auto ports = towns.Root()[1][1];
  towns.removeChild(ports);
  // [dissolve]
  Show("dissolved:", towns.Root());

  // [delete]
  auto gone = towns.Root()[0];
  towns.Delete(gone);    // the group and all below it
  towns.Relocate(true);  // before handles for the next change are made
  gone = towns.Root()[0][3];
  towns.Delete(gone);
  towns.Relocate(true);
  // [delete]
  Show("deleted:", towns.Root());
  std::cout << towns.NumCategories() << " places\n";
}
