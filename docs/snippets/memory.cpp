// The snippets of docs/memory.md.

#include <iostream>

#include "backend/tables/om/om.h"
#include "platform/cells/CellTexts.h"
#include "platform/memory/MemoryRegion.h"

int main() {
  std::cout << std::boolalpha;

  // [region]
  OmMemoryRegion region(false);  // for one thread at a time, so it takes no lock
  auto* const text = new (&region) OmStringCell("charged to the region", &region);
  OmVector<int> numbers(&region);
  for (int i = 0; i < 5; ++i) {
    numbers.push_back(i);
  }
  std::cout << region.LiveBlocks() << " blocks, room for " << numbers.capacity() << " numbers\n";
  delete text;  // a block knows its region, so plain delete releases it there
  numbers.clear();
  std::cout << region.LiveBlocks() << " blocks\n";
  // [region]

  // [clone]
  const OmStringCell original("a label");
  OmCellText* const copy = original.Clone(&region);
  std::cout << region.LiveBlocks() << " block for \"" << copy->Text() << "\"\n";
  delete copy;
  // [clone]

  // [default]
  const OmVector<int> elsewhere(nullptr);  // null is the default heap, never "no region"
  std::cout << (elsewhere.Region() == OmMemoryRegion::DefaultHeap()) << '\n';
  // [default]

  // [table]
  const unsigned long before = OmMemoryRegion::DefaultHeap()->LiveBlocks();
  {
    OmPivotTable table(OmStringCell("T"), OmStringCell("T"), false);
    OmDimension* const dimension = table.AddDimension(OmStringCell("D"));
    dimension->Child(dimension->Root(), OmStringCell("c"), 0, false);
    table.Cell({0}, OmNumber(1));
    // The title is an item's, and on the default heap. All else is in the table's own region.
    std::cout << OmMemoryRegion::DefaultHeap()->LiveBlocks() - before << " block outside\n";
  }
  std::cout << OmMemoryRegion::DefaultHeap()->LiveBlocks() - before << " blocks left\n";
  // [table]
}
