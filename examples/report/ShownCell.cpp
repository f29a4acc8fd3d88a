#include "examples/report/ShownCell.h"

#include <algorithm>

#include "backend/tables/om/PivotTable.h"
#include "platform/cells/CellTexts.h"

namespace report {

namespace {

class NumberTest : public OmCellText::Visitor {
 public:
  void Visit(OmNumber&) override { isNumber = true; }
  void Visit(OmNumDataValue&) override { isNumber = true; }
  void Visit(OmStringCell&) override {}
  void Visit(OmStringCellUTF8&) override {}
  void Visit(OmVariable&) override {}
  void Visit(OmStringDataValue&) override {}
  void Visit(OmComposite&) override {}

  bool isNumber = false;
};

}  // namespace

OmCellText* ShownCell(OmPivotTable& table, const std::vector<int>& subscripts) {
  const bool addressed = std::all_of(subscripts.begin(), subscripts.end(),
                                     [](int subscript) { return subscript >= 0; });
  return addressed ? table.Cell(subscripts) : nullptr;
}

bool IsNumber(OmCellText& cell) {
  NumberTest test;
  cell.Accept(test);
  return test.isNumber;
}

}  // namespace report
