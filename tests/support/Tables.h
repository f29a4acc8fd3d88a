// Small helpers for tests over tables.

#ifndef TESTS_SUPPORT_TABLES_H
#define TESTS_SUPPORT_TABLES_H

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "backend/tables/om/Dimension.h"
#include "backend/tables/om/Exception.h"
#include "backend/tables/om/PivotTable.h"
#include "platform/cells/CellTexts.h"

// Adds a dimension of `count` categories with the subscripts 0, 1, … to a table.
inline OmDimension* AddDimension(OmPivotTable& table, const std::string& name, int count) {
  OmDimension* const dimension = table.AddDimension(OmStringCell(name));
  for (int i = 0; i < count; ++i) {
    dimension->AddNewChild(dimension->Root(), OmStringCell(name + std::to_string(i)),
                           static_cast<unsigned long>(i), false);
  }
  return dimension;
}

// Returns what the exception of a call says.
template <typename Call>
std::string Message(Call call) {
  try {
    call();
  } catch (const OMSException& error) {
    return error.what();
  }
  return "nothing thrown";
}

// A text that can be copied `left` times, its copies one time less each. All hold the count.
class BrittleText : public OmStringCell {
 public:
  explicit BrittleText(int left_, const std::string& text = "", std::shared_ptr<int> count_ = {})
      : OmStringCell(text), left(left_), count(std::move(count_)) {}
  [[nodiscard]] OmCellText* Clone(OmMemoryRegion* region) const override {
    return left == 0 ? throw std::runtime_error("no more copies")
                     : new (region) BrittleText(left - 1, Text(), count);
  }

 private:
  int left;
  std::shared_ptr<int> count;
};

#endif
