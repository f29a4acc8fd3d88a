// The diagnostic dump of a pivot table on the standard output.

#include <iostream>
#include <locale>
#include <sstream>
#include <string>
#include <utility>

#include "backend/tables/om/Assert.h"
#include "backend/tables/om/CellIterator.h"
#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/PivotTable.h"
#include "backend/tables/om/PivotTableData.h"

namespace {

// Returns an address as a stream with default flags writes it.
std::string Address(const void* p) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << p;
  return text.str();
}

}  // namespace

void OmPivotTable::Print() const {
  OM_HARDEN(_my->tableTitle != nullptr, "OmPivotTable::Print");
  std::cout << "Starting table " << _my->tableTitle->Text() << std::endl;
  for (OmDimension* const dimension : _my->_dimensions) {
    dimension->Root().Print();
  }
  std::cout << "Cells" << std::endl;
  for (ConstIterator cell = FirstCell(); cell.Cell() != nullptr; ++cell) {
    std::cout << cell.Cell()->Text() << std::endl;
  }
  if (_my->cornerText != nullptr) {
    std::cout << "  Corner Text: " << _my->cornerText->Text() << std::endl;
  }
  if (_my->caption != nullptr) {
    std::cout << "  Caption: " << _my->caption->Text() << std::endl;
  }
  if (_my->footnotes.size() != 0) {
    std::cout << "  Footnotes" << std::endl;
    for (const OmFootnote& footnote : _my->footnotes) {
      std::cout << "      ";
      if (footnote.Text() != nullptr) {
        std::cout << footnote.Text()->Text();
      }
      std::cout << std::endl;
    }
  }
  std::cout << "Done with table " << _my->tableTitle->Text() << std::endl;
}

void OmPivotTable::PrintCells(PointerVector* v, unsigned long depth, unsigned long index) const {
  // Every step of the indentation has the same index, on purpose: readers of the dump expect it.
  for (unsigned long step = 0; step < depth; ++step) {
    std::cout << "    [" << std::to_string(index) << "] ";
  }
  if (depth >= _my->_dimensions.size()) {
    // Below the last level of vectors are the cells.
    void* const element = v;
    auto* const cell = static_cast<OmCellText*>(element);
    std::cout << Address(element);
    if (cell != nullptr) {
      std::cout << " - " << cell->Text();
    }
    std::cout << std::endl;
    return;
  }
  OM_HARDEN(v != nullptr, "OmPivotTable::PrintCells");
  std::cout << Address(v) << std::endl;
  for (unsigned long i = 0; i < v->size(); ++i) {
    // Reads through the const operator: the other one marks the slot as used.
    PrintCells(static_cast<PointerVector*>(std::as_const(*v)[i]), depth + 1, i);
  }
}
